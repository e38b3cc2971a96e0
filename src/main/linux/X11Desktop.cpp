#include "main/linux/LinuxDesktop.h"

#include <xcb/xcb.h>

// Needs the names of the one above.
#include <vulkan/vulkan_core.h>
#include <vulkan/vulkan_xcb.h>

#include <cstdint>
#include <span>
#include <utility>

#include "gpu/vulkan/VulkanFactory.h"
#include "platform/linux/x11/X11Activity.h"
#include "platform/linux/x11/X11BandFactory.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11PanelCapture.h"
#include "platform/linux/x11/X11PictureSink.h"
#include "platform/linux/x11/X11ScreenProvider.h"

namespace veloria {

namespace {

class X11Desktop final : public VulkanDesktop {
 public:
  X11Desktop(const std::string& displayName, const DescriptorWatcher& watch, TimerFactory& timers)
      : connection_(displayName, watch, timers),
        screens_(connection_, screenOverridesFromEnvironment()),
        bands_(connection_, screens_,
               [this](xcb_connection_t* server, xcb_window_t window) { return makeSurface(server, window); }),
        capture_(connection_, screens_),
        fullScreen_(connection_, screens_),
        dpms_(connection_) {
    dpms_.setHandler([this](bool off) { displaysOff_ = off; });
  }

  const char* name() const override { return "x11"; }
  ScreenProvider& screens() override { return screens_; }
  OverlayPanelFactory& panels() override { return bands_; }

  bool showsTranslucency() const override { return connection_.compositorRunning(); }
  BarCaptureStream* captureStream() override { return &capture_; }
  void setCaptureChanceHandler(std::function<void()> handler) override {
    compositorChange_ = connection_.onCompositorChange(std::move(handler));
  }

  PointerSource pointerSource() override { return x11PointerSource(connection_, screens_); }
  bool isFullScreen() override { return fullScreen_.isActive(); }
  bool displaysOff() override {
    dpms_.poll();
    return displaysOff_;
  }

  void setBrokenHandler(std::function<void(const std::string&)> handler) override {
    connection_.setBrokenHandler(std::move(handler));
  }

 private:
  std::unique_ptr<gpu::Surface> makeSurface(xcb_connection_t* connection, xcb_window_t window) {
    const std::uint8_t depth = windowDepth(connection, window);
    if (depth == 32 && gpu::vulkan::needsHostSurface(device())) {
      const auto sink = std::make_shared<X11PictureSink>(connection, window, depth);
      return gpu::vulkan::makeHostSurface(device(), [sink](std::span<const std::byte> rows, gpu::Size size) {
        sink->put(rows, size.width, size.height);
      });
    }
    return gpu::vulkan::makeSurface(device(), [connection, window](VkInstance instance) {
      VkXcbSurfaceCreateInfoKHR info{};
      info.sType = VK_STRUCTURE_TYPE_XCB_SURFACE_CREATE_INFO_KHR;
      info.connection = connection;
      info.window = window;
      VkSurfaceKHR surface = VK_NULL_HANDLE;
      return vkCreateXcbSurfaceKHR(instance, &info, nullptr, &surface) == VK_SUCCESS ? surface : VK_NULL_HANDLE;
    });
  }

  X11Connection connection_;
  X11ScreenProvider screens_;
  X11BandFactory bands_;
  X11PanelCapture capture_;
  X11FullScreen fullScreen_;
  X11Dpms dpms_;
  bool displaysOff_ = false;
  X11Connection::Subscription compositorChange_;
};

}  // namespace

std::unique_ptr<Desktop> makeX11Desktop(const std::string& displayName, const DescriptorWatcher& watch,
                                        TimerFactory& timers) {
  return std::make_unique<X11Desktop>(displayName, watch, timers);
}

}  // namespace veloria
