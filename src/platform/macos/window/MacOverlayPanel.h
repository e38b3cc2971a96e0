#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "gpu/Surface.h"
#include "platform/macos/window/MacOverlayPanelFactory.h"
#include "platform/macos/window/NimbraMetalView.h"
#include "platform/macos/window/NimbraPanel.h"
#include "ports/OverlayPanel.h"

/// Hands the view's frames on.
@interface NimbraViewDelegate : NSObject <MTKViewDelegate>
@property(nonatomic, copy) dispatch_block_t onDraw;
@end

namespace veloria {

class MacOverlayPanel final : public OverlayPanel {
 public:
  MacOverlayPanel(const Screen& screen, const MetalSurfaceMaker& makeSurface, std::optional<long> debugLevel);
  ~MacOverlayPanel() override;

  gpu::Size drawableSize() const override;
  gpu::PixelFormat colorPixelFormat() const override;
  gpu::Drawable* currentDrawable() override;

  void setFrame(const Rect& frame, double scale) override;
  void setLevel(OverlayLevel level) override;
  std::string levelName(OverlayLevel level) const override;
  void setPixelFormat(gpu::PixelFormat wanted) override;
  void setPreferredFramesPerSecond(double rate) override;
  void setPaused(bool paused) override;
  void setDrawHandler(std::function<void()> handler) override;
  void orderFront() override;
  void orderOut() override;

 private:
  void configureSurface();

  std::optional<long> debugLevel_;
  gpu::PixelFormat wanted_ = gpu::PixelFormat::bgra8Unorm;
  NimbraMetalView* view_;
  NimbraPanel* panel_;
  NimbraViewDelegate* delegate_;
  std::unique_ptr<gpu::Surface> surface_;
};

}  // namespace veloria
