#include <xcb/xcb.h>

// Needs the names of the one above.
#include <vulkan/vulkan_core.h>
#include <vulkan/vulkan_xcb.h>

#include <QCoreApplication>
#include <QTimer>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "app/AppDelegate.h"
#include "app/RemoteControl.h"
#include "base/LocalSocket.h"
#include "base/Log.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "main/Command.h"
#include "main/Commands.h"
#include "main/GpuSetup.h"
#include "main/LiveSources.h"
#include "main/RunningApplication.h"
#include "main/SignalWatch.h"
#include "platform/linux/files/FileSettingsStorage.h"
#include "platform/linux/files/UserFolders.h"
#include "platform/linux/qt/DescriptorWatch.h"
#include "platform/linux/qt/QtTimerFactory.h"
#include "platform/linux/socket/InstanceLock.h"
#include "platform/linux/socket/LocalServer.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11OverlayPanelFactory.h"
#include "platform/linux/x11/X11PictureSink.h"
#include "platform/linux/x11/X11ScreenProvider.h"
#include "scene/SceneDriver.h"
#include "settings/SettingsStore.h"

namespace veloria {

namespace {

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

struct Instance {
  bool otherRuns = false;
  std::optional<InstanceLock> lock;  ///< nothing where it can't be had: running without it is better than not running
};

void complainAboutSocket(const std::string& reason) {
  systemLog("veloria: 'veloria status' and 'nimbra' can't reach this one: " + reason);
}

Instance becomeTheOne(const std::optional<std::filesystem::path>& socketPath) {
  if (!socketPath) return complainAboutSocket("XDG_RUNTIME_DIR is too long"), Instance{};
  auto lock = InstanceLock::take(*socketPath);
  if (!lock) return complainAboutSocket(lock.error()), Instance{};
  return {!lock->has_value(), *std::move(lock)};
}

/// Brings up the settings of the one that runs; while it has no window for them, tells how it is.
int greetTheOther() {
  std::puts("Veloria is running already.");
  const auto status = askRunningApplication(R"({"command": "status"})");
  if (status) std::fputs(statusText(*status).c_str(), stdout);
  return done;
}

std::unique_ptr<LocalServer> listenForQuestions(const std::filesystem::path& path, TimerFactory& timers,
                                                RemoteControl& remote) {
  auto server = LocalServer::listen(path, {.watch = watchDescriptor, .timers = &timers, .answer = [&](auto question) {
                                             return remote.answer(question);
                                           }});
  if (server) return *std::move(server);
  complainAboutSocket(server.error());
  return nullptr;
}

}  // namespace

int runApplication(const QStringList&) {
  const Environment environment = processEnvironment();
  const auto socketPath = controlSocketPath(environment);
  const Instance instance = becomeTheOne(socketPath);
  if (instance.otherRuns) return greetTheOther();
  QtTimerFactory timers;
  X11Connection connection(displayName(), watchDescriptor, timers);
  X11ScreenProvider screens(connection, screenOverridesFromEnvironment());
  VulkanOnX11 vulkan;
  X11OverlayPanelFactory panels(connection, screens, [&](xcb_connection_t* server, xcb_window_t window) {
    return vulkan.makeSurface(server, window);
  });
  SettingsStore& settings = SettingsStore::makeShared(
      std::make_unique<FileSettingsStorage>(configFolder(environment).value_or("")), environment);
  LiveSources sources(environment, screens);
  SceneDriver::Ports driverPorts{.settings = [&]() -> const NimbraConfig& { return settings.config(); },
                                 .timers = &timers};
  sources.addTo(driverPorts);
  SceneDriver driver(std::move(driverPorts));

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
      .backendName = "x11",
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
  RemoteControl remote({.settings = &settings, .status = [&] { return delegate.status(); }});
  const auto server = instance.lock ? listenForQuestions(*socketPath, timers, remote) : nullptr;
  QCoreApplication::exec();
  delegate.willTerminate();
  return exitCode;
}

}  // namespace veloria
