#include "platform/linux/wayland/WaylandOverlayPanelFactory.h"

#include <stdexcept>
#include <utility>

#include "platform/linux/screens/PanelHint.h"

namespace veloria {

WaylandOverlayPanelFactory::WaylandOverlayPanelFactory(WaylandConnection& connection, WaylandScreenProvider& screens,
                                                       LayerStacking stacking, WaylandSurfaceMaker makeSurface)
    : connection_(connection),
      screens_(screens),
      stacking_(stacking),
      makeSurface_(std::move(makeSurface)),
      wallpapers_(connection.timers()) {
  if (connection_.layerShell() == nullptr) {
    throw std::runtime_error(
        "The Wayland compositor lacks the layer shell (wlr-layer-shell), without which nothing can be painted under or "
        "over its panel.");
  }
}

std::unique_ptr<OverlayPanel> WaylandOverlayPanelFactory::makePanel(const Screen& screen) {
  auto panel =
      std::make_unique<WaylandOverlayPanel>(connection_, screens_, wallpapers_, stacking_, screen.number, makeSurface_);
  panel->setFrame(screen.frame, screen.backingScale);
  return panel;
}

std::string WaylandOverlayPanelFactory::visibilityHint(const Screen& screen, OverlayLevel level) {
  if (level != OverlayLevel::desktop) return {};
  if (!screens_.panelsTold()) return untoldPanelHint();
  return screen.visibleFrame.maxY() < screen.frame.maxY() ? unknownPanelHint() : std::string();
}

}  // namespace veloria
