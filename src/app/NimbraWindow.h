#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "ports/OverlayPanel.h"
#include "ports/ScreenProvider.h"
#include "render/NimbraRenderer.h"
#include "render/StripGeometry.h"
#include "settings/ExtraSettings.h"

namespace veloria {

/// Reads NIMBRA_DEBUG_LEVEL: a base-10 integer with an optional sign, otherwise nothing.
std::optional<long> debugWindowLevel(const std::optional<std::string>& text);

/// The level for a layer mode. `debugLevel` (NIMBRA_DEBUG_LEVEL) wins when it is a base-10 integer with an optional
/// sign: above 0 is above the menu bar, all else the desktop.
OverlayLevel overlayLevelFor(LayerMode mode, const std::optional<std::string>& debugLevel);

/// The format to ask a surface for: extended range (rgba16Float) or 8 bits (bgra8Unorm).
gpu::PixelFormat pixelFormatFor(bool hdrGlow);

/// One screen's band: places and configures its window from the settings and lets a renderer draw into it. Main thread.
class NimbraWindow {
 public:
  struct Options {
    std::optional<std::string> debugLevel;  ///< the value of NIMBRA_DEBUG_LEVEL
    EdgeChoice edge = EdgeChoice::automatic;
    std::function<void()> onDeviceLost;  ///< called from a draw that found the GPU gone; must not destroy the window
  };

  NimbraWindow(std::unique_ptr<OverlayPanel> panel, std::weak_ptr<NimbraRenderer> renderer, const Screen& screen,
               const NimbraConfig& config, Options options);
  ~NimbraWindow();
  NimbraWindow(const NimbraWindow&) = delete;
  NimbraWindow& operator=(const NimbraWindow&) = delete;

  /// Places and configures the window again for these settings and this screen.
  void apply(const NimbraConfig& config, EdgeChoice edge, const Screen& screen);

  /// Draws at this part of the wanted rate, 1 being all of it, 2 a half.
  void setRateDivisor(int divisor);
  int rateDivisor() const { return divisor_; }
  double wantedRate() const { return wantedRate_; }

  /// Shows the band and draws, or hides it and stops drawing.
  void setRendering(bool on);

  const StripGeometry& geometry() const { return geometry_; }
  OverlayLevel level() const { return level_; }
  const Screen& screen() const { return screen_; }
  /// `invalid` before the first frame.
  gpu::PixelFormat pixelFormat() const { return panel_->colorPixelFormat(); }

 private:
  void draw();

  std::unique_ptr<OverlayPanel> panel_;
  std::weak_ptr<NimbraRenderer> renderer_;
  Options options_;
  Screen screen_;
  StripGeometry geometry_;
  OverlayLevel level_ = OverlayLevel::desktop;
  double wantedRate_ = 60;
  int divisor_ = 1;
};

}  // namespace veloria
