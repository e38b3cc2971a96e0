#include "main/linux/LinuxDesktop.h"

#include <xcb/xcb.h>

// Needs the names of the one above.
#include <volk.h>
#include <vulkan/vulkan_xcb.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "gpu/cpu/CpuFactory.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "platform/linux/gnome/ShellFacts.h"
#include "platform/linux/x11/X11Activity.h"
#include "platform/linux/x11/X11BandFactory.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11PanelCapture.h"
#include "platform/linux/x11/X11PictureBuffers.h"
#include "platform/linux/x11/X11ScreenProvider.h"

namespace veloria {

namespace {

constexpr std::uint8_t depthWithAlpha = 32;

class X11Desktop final : public DrawnDesktop {
 public:
  X11Desktop(const std::string& displayName, bool besideGnome, const DescriptorWatcher& watch, TimerFactory& timers)
      : displayName_(displayName),
        connection_(displayName, watch, timers),
        screens_(connection_, screenOverridesFromEnvironment()),
        bands_(connection_, screens_,
               [this](xcb_connection_t* server, xcb_window_t window) { return makeSurface(server, window); }),
        capture_(connection_, screens_),
        fullScreen_(connection_, screens_),
        dpms_(connection_) {
    dpms_.setHandler([this](bool off) { displaysOff_ = off; });
    if (!besideGnome) return;
    shell_ = std::make_unique<ShellFacts>();
    shell_->setChangeHandler([this] { placePanel(); });
  }

  const char* name() const override { return "x11"; }
  ScreenProvider& screens() override { return screens_; }
  OverlayPanelFactory& panels() override { return bands_; }

  bool showsTranslucency() const override { return connection_.compositorRunning(); }
  BarCaptureStream* captureStream() override { return &capture_; }
  void setCaptureChanceHandler(std::function<void()> handler) override {
    compositorChange_ = connection_.onCompositorChange(std::move(handler));
  }

  PointerSource pointerSource() override {
    auto source = x11PointerSource(connection_, screens_);
    if (!shell_) return source;
    source.follow = [this](const Rect& place) {
      const ScreenSpace& space = screens_.space();
      shell_->watchPointer(sharesOf(space.toPixels(place, space.scale), screens_.root()));
    };
    source.location = [this, ofServer = std::move(source.location)] {
      return shell_->answers() ? pointerOfShell() : ofServer();
    };
    return source;
  }
  bool isFullScreen() override {
    const auto all = screens_.screens();
    if (!shell_ || !shell_->answers() || all.empty()) return fullScreen_.isActive();
    const PixelRect first = screens_.space().toPixels(all.front().frame, all.front().backingScale);
    return coverMonitor(shell_->fullScreen(), first, screens_.root());
  }
  bool displaysOff() override {
    dpms_.poll();
    return displaysOff_;
  }

  void setBrokenHandler(std::function<void(const std::string&)> handler) override {
    connection_.setBrokenHandler(std::move(handler));
  }

 private:
  std::optional<Point> pointerOfShell() {
    const auto share = shell_->pointer();
    if (!share) return std::nullopt;
    const PixelRect pixel = pixelsOf({share->x, share->y, 0, 0}, screens_.root());
    return screens_.space().toPoints(pixel.x, pixel.y);
  }

  void placePanel() {
    const auto panel = shell_->panel();
    screens_.setForeignPanel(panel ? std::optional(pixelsOf(*panel, screens_.root())) : std::nullopt);
  }

  std::unique_ptr<gpu::PictureBuffers> makeBuffers(xcb_window_t window) {
    return std::make_unique<X11PictureBuffers>(displayName_, window);
  }
  std::unique_ptr<gpu::Surface> makeSurface(xcb_connection_t* connection, xcb_window_t window) {
    if (gpu::cpu::isCpuDevice(device())) return gpu::cpu::makeSurface(device(), makeBuffers(window));
    if (bands_.visual().depth == depthWithAlpha && gpu::vulkan::needsHostSurface(device())) {
      return gpu::vulkan::makeHostSurface(device(), makeBuffers(window));
    }
    return gpu::vulkan::makeSurface(device(), [connection, window](VkInstance instance) {
      VkXcbSurfaceCreateInfoKHR info{};
      info.sType = VK_STRUCTURE_TYPE_XCB_SURFACE_CREATE_INFO_KHR;
      info.connection = connection;
      info.window = window;
      VkSurfaceKHR surface = VK_NULL_HANDLE;
      const auto create =
          reinterpret_cast<PFN_vkCreateXcbSurfaceKHR>(vkGetInstanceProcAddr(instance, "vkCreateXcbSurfaceKHR"));
      if (create != nullptr) create(instance, &info, nullptr, &surface);
      return surface;
    });
  }

  std::string displayName_;
  X11Connection connection_;
  X11ScreenProvider screens_;
  X11BandFactory bands_;
  X11PanelCapture capture_;
  X11FullScreen fullScreen_;
  X11Dpms dpms_;
  bool displaysOff_ = false;
  X11Connection::Subscription compositorChange_;
  std::unique_ptr<ShellFacts> shell_;  ///< null but on XWayland in GNOME
};

}  // namespace

std::unique_ptr<Desktop> makeX11Desktop(const std::string& displayName, bool besideGnome,
                                        const DescriptorWatcher& watch, TimerFactory& timers) {
  return std::make_unique<X11Desktop>(displayName, besideGnome, watch, timers);
}

}  // namespace veloria
