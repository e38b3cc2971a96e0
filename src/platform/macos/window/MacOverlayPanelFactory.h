#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "gpu/Surface.h"
#include "ports/OverlayPanel.h"

namespace veloria {

/// A surface that draws into `layer`, a CAMetalLayer, on the device in use; see gpu::metal::makeSurface().
using MetalSurfaceMaker = std::function<std::unique_ptr<gpu::Surface>(void* layer)>;

/// Overlay windows on this Mac. Main thread, once there is an application object.
class MacOverlayPanelFactory final : public OverlayPanelFactory {
 public:
  /// `debugLevel` (NIMBRA_DEBUG_LEVEL) is the level of every window, when it is there.
  MacOverlayPanelFactory(MetalSurfaceMaker makeSurface, std::optional<long> debugLevel);

  std::unique_ptr<OverlayPanel> makePanel(const Screen& screen) override;
  std::string visibilityHint(const Screen& screen, OverlayLevel level) override;

 private:
  MetalSurfaceMaker makeSurface_;
  std::optional<long> debugLevel_;
};

}  // namespace veloria
