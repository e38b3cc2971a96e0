#include <xcb/xcb.h>

// Needs the names of the one above.
#include <vulkan/vulkan_core.h>
#include <vulkan/vulkan_xcb.h>

#include <QCoreApplication>
#include <QTimer>
#include <chrono>
#include <csignal>
#include <memory>
#include <span>
#include <string>

#include "app/AppDelegate.h"
#include "base/Log.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "main/Command.h"
#include "main/Commands.h"
#include "main/GpuSetup.h"
#include "main/SignalWatch.h"
#include "platform/linux/files/FileSettingsStorage.h"
#include "platform/linux/files/UserFolders.h"
#include "platform/linux/qt/DescriptorWatch.h"
#include "platform/linux/qt/QtTimerFactory.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11OverlayPanelFactory.h"
#include "platform/linux/x11/X11PictureSink.h"
#include "platform/linux/x11/X11ScreenProvider.h"
#include "scene/SceneDriver.h"
#include "settings/SettingsStore.h"

namespace veloria {

namespace {

double wallClock() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

/// Vulkan surfaces for X11 windows, on whichever device was made last.
class VulkanOnX11 {
 public:
  std::unique_ptr<gpu::Device> makeDevice() {
    auto device = veloria::makeDevice({});
    current_ = device.get();
    return device;
  }

  std::unique_ptr<gpu::Surface> makeSurface(xcb_connection_t* connection, xcb_window_t window) {
    const std::uint8_t depth = windowDepth(connection, window);
    if (depth == 32 && gpu::vulkan::needsHostSurface(*current_)) {
      const auto sink = std::make_shared<X11PictureSink>(connection, window, depth);
      return gpu::vulkan::makeHostSurface(*current_, [sink](std::span<const std::byte> rows, gpu::Size size) {
        sink->put(rows, size.width, size.height);
      });
    }
    return gpu::vulkan::makeSurface(*current_, [connection, window](VkInstance instance) {
      VkXcbSurfaceCreateInfoKHR info{};
      info.sType = VK_STRUCTURE_TYPE_XCB_SURFACE_CREATE_INFO_KHR;
      info.connection = connection;
      info.window = window;
      VkSurfaceKHR surface = VK_NULL_HANDLE;
      return vkCreateXcbSurfaceKHR(instance, &info, nullptr, &surface) == VK_SUCCESS ? surface : VK_NULL_HANDLE;
    });
  }

 private:
  gpu::Device* current_ = nullptr;
};

std::string displayName() {
  const auto display = processEnvironment()("DISPLAY");
  if (!display || display->empty()) {
    throw WorkError(
        "there is no X11 display here (DISPLAY is not set). 'veloria render --help' tells how to draw "
        "without one.");
  }
  return *display;
}

}  // namespace

int runApplication(const QStringList&) {
  const Environment environment = processEnvironment();
  QtTimerFactory timers;
  X11Connection connection(displayName(), watchDescriptor, timers);
  X11ScreenProvider screens(connection, screenOverridesFromEnvironment());
  VulkanOnX11 vulkan;
  X11OverlayPanelFactory panels(connection, screens, [&](xcb_connection_t* server, xcb_window_t window) {
    return vulkan.makeSurface(server, window);
  });
  SettingsStore& settings = SettingsStore::makeShared(
      std::make_unique<FileSettingsStorage>(configFolder(environment).value_or("")), environment);
  SceneDriver driver({.settings = [&]() -> const NimbraConfig& { return settings.config(); },
                      .wallClock = wallClock,
                      .timers = &timers});

  int exitCode = done;
  AppDelegate delegate({
      .makeDevice = [&] { return vulkan.makeDevice(); },
      .shaderLibraries = shaderLibraryCandidates(programPlaces()),
      .screens = &screens,
      .panels = &panels,
      .timers = &timers,
      .settings = &settings,
      .driver = &driver,
      .environment = environment,
      .alert = [](const std::string& message, const std::string& text) { systemLog(message + "\n" + text); },
      .terminate =
          [&](bool failure) {
            exitCode = failure ? failed : done;
            QTimer::singleShot(0, [&] { QCoreApplication::exit(exitCode); });
          },
      .hint = [](const std::string& text) { systemLog("Veloria: " + text); },
  });
  connection.setBrokenHandler([&](const std::string& reason) {
    systemLog("veloria: " + reason);
    exitCode = failed;
    QCoreApplication::exit(failed);
  });
  const SignalWatch signals({SIGINT, SIGTERM, SIGHUP}, [] { QCoreApplication::exit(done); });

  delegate.didFinishLaunching();
  QCoreApplication::exec();
  delegate.willTerminate();
  return exitCode;
}

}  // namespace veloria
