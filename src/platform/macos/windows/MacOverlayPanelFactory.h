#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "gpu/Surface.h"
#include "ports/OverlayPanel.h"

namespace veloria {

/// Makes a surface that draws into `layer`, a CAMetalLayer, on the device in use; see gpu::metal::makeSurface().
using MetalSurfaceMaker = std::function<std::unique_ptr<gpu::Surface>(void* layer)>;

/// Makes the band's windows. Main thread, after the application object is made.
class MacOverlayPanelFactory final : public OverlayPanelFactory {
 public:
  /// `debugLevel` (NIMBRA_DEBUG_LEVEL), if given, is the level of every window.
  MacOverlayPanelFactory(MetalSurfaceMaker makeSurface, std::optional<long> debugLevel);

  std::unique_ptr<OverlayPanel> makePanel(const Screen& screen) override;
  Visibility visibility(const Screen& screen, const Rect& band, OverlayLevel level) override;

 private:
  MetalSurfaceMaker makeSurface_;
  std::optional<long> debugLevel_;
};

}  // namespace veloria
