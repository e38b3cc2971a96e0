#include "main/linux/LinuxDesktop.h"

#include <wayland-client.h>

// Needs the names of the one above.
#include <volk.h>
#include <vulkan/vulkan_wayland.h>

#include <QDBusConnection>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include "gpu/cpu/CpuFactory.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "platform/linux/files/DesktopNames.h"
#include "platform/linux/hyprland/HyprlandPointer.h"
#include "platform/linux/wayland/CompositorQuestions.h"
#include "platform/linux/wayland/PlasmaPanels.h"
#include "platform/linux/wayland/WaylandActivity.h"
#include "platform/linux/wayland/WaylandBand.h"
#include "platform/linux/wayland/WaylandPictureBuffers.h"
#include "platform/linux/wayland/WaylandScreenProvider.h"

namespace veloria {

namespace {

class WaylandDesktop final : public DrawnDesktop {
 public:
  WaylandDesktop(std::unique_ptr<WaylandConnection> connection, const Environment& environment)
      : environment_(environment),
        connection_(std::move(connection)),
        compositor_(environment),
        plasma_(makePlasmaPanels(environment)),
        screens_(
            *connection_, [this](auto monitors) { return reservedEdges(monitors); }, screenOverridesFromEnvironment()),
        fullScreen_(*connection_, [this] { return compositor_.coveredOutputs(); }),
        outputPower_(*connection_),
        bands_(*connection_, screens_, compositor_.layerStacking(),
               [this](wl_display* display, wl_surface* surface) { return makeSurface(display, surface); }) {
    if (plasma_) panelsMoved_ = screens_.onPanelsMoved([this] { plasma_->read(); });
  }

  const char* name() const override { return "wayland"; }
  ScreenProvider& screens() override { return screens_; }
  OverlayPanelFactory& panels() override { return bands_; }

  BarCaptureStream* captureStream() override { return nullptr; }
  std::string captureProblem() const override { return "Wayland cannot capture the panel without our own light"; }

  PointerSource pointerSource() override {
    const auto socket = hyprlandRequestSocket(environment_);
    if (!socket) return {nullptr, "on Wayland only Hyprland reports the pointer's position"};
    return hyprlandPointerSource(*socket, [this](Point point) { return fromLayout(point); });
  }
  bool isFullScreen() override {
    const auto screens = screens_.screens();
    const auto output = screens.empty() ? nullptr : screens_.output(screens.front().number);
    return output != nullptr && fullScreen_.isActive(*output);
  }
  bool displaysOff() override { return outputPower_.allOff(); }

  void setBrokenHandler(std::function<void(const std::string&)> handler) override {
    connection_->setBrokenHandler(std::move(handler));
  }

 private:
  std::unique_ptr<PlasmaPanels> makePlasmaPanels(const Environment& environment) {
    if (!isDesktop(environment, "kde")) return nullptr;
    return std::make_unique<PlasmaPanels>(QDBusConnection::sessionBus(), [this] { screens_.reservedEdgesChanged(); });
  }
  std::optional<ReservedEdges> reservedEdges(std::span<const MonitorDescription> monitors) const {
    return plasma_ ? plasma_->reservedEdges(monitors) : compositor_.reservedEdges();
  }
  Point fromLayout(Point point) {
    const ScreenSpace& space = screens_.space();
    return {point.x - space.originX, space.originBottom - point.y};
  }

  std::unique_ptr<gpu::PictureBuffers> makeBuffers(wl_surface* surface) {
    return std::make_unique<WaylandPictureBuffers>(*connection_, surface);
  }
  std::unique_ptr<gpu::Surface> makeSurface(wl_display* display, wl_surface* surface) {
    if (gpu::cpu::isCpuDevice(device())) return gpu::cpu::makeSurface(device(), makeBuffers(surface));
    return gpu::vulkan::makeSurface(device(), [display, surface](VkInstance instance) {
      VkWaylandSurfaceCreateInfoKHR info{};
      info.sType = VK_STRUCTURE_TYPE_WAYLAND_SURFACE_CREATE_INFO_KHR;
      info.display = display;
      info.surface = surface;
      VkSurfaceKHR made = VK_NULL_HANDLE;
      const auto create =
          reinterpret_cast<PFN_vkCreateWaylandSurfaceKHR>(vkGetInstanceProcAddr(instance, "vkCreateWaylandSurfaceKHR"));
      if (create != nullptr) create(instance, &info, nullptr, &made);
      return made;
    });
  }

  Environment environment_;
  std::unique_ptr<WaylandConnection> connection_;
  CompositorQuestions compositor_;
  std::unique_ptr<PlasmaPanels> plasma_;
  WaylandScreenProvider screens_;
  WaylandFullScreen fullScreen_;
  WaylandOutputPower outputPower_;
  WaylandBandFactory bands_;
  std::shared_ptr<void> panelsMoved_;
};

}  // namespace

std::unique_ptr<Desktop> makeWaylandDesktop(std::unique_ptr<WaylandConnection> connection,
                                            const Environment& environment) {
  return std::make_unique<WaylandDesktop>(std::move(connection), environment);
}

}  // namespace veloria
