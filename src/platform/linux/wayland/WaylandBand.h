#pragma once

#include <algorithm>
#include <functional>
#include <memory>

#include "gpu/Surface.h"
#include "platform/linux/screens/Pacing.h"
#include "platform/linux/wayland/LayerSurface.h"
#include "platform/linux/wayland/WallpaperPrograms.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandScreenProvider.h"
#include "ports/OverlayPanel.h"

namespace veloria {

/// When frames are due that have a rate of their own and may come only when the compositor asks for one. Times are
/// seconds from any zero.
class FramePacing {
 public:
  /// Frames per second, above 0.
  constexpr void setRate(double rate) { interval_ = 1 / rate; }

  /// True for a frame at `now`. One that will be due before the compositor asks again counts as due: a rate a little
  /// below the display's must not halve it.
  constexpr bool due(double now) const { return wait(now) <= interval_ * slack; }

  /// Seconds until the next frame, 0 if it is late.
  constexpr double wait(double now) const { return std::max(0.0, next_ - now); }

  /// A frame is drawn at `now`. Frames that were missed are not made up for.
  constexpr void drawn(double now) { next_ = std::max(next_, now - interval_ * slack) + interval_; }

 private:
  static constexpr double slack = 0.25;
  double interval_ = 1.0 / 60;
  double next_ = 0;
};

/// Makes the GPU surface of a Wayland surface. Presenting commits that, at once or on another thread later. May return
/// nullptr (then nothing is ever drawn) and may throw std::exception.
using WaylandSurfaceMaker = std::function<std::unique_ptr<gpu::Surface>(wl_display*, wl_surface*)>;

/// The band as a surface of the layer shell, at the top or bottom of one output: over the panel in layer `overlay`; on
/// the desktop in layer `background`, or in `bottom` if the newest surface of a layer is the lowest, since a new one
/// would then be hidden by the wallpaper in its own layer. It exists only while it is shown; a change of level makes a
/// new one. Frames come at the slower of the wanted rate and the compositor's: while that asks for none (the output is
/// off, or a window covers it) nothing is drawn and nothing wakes up. On the desktop it is made again if another
/// surface in its layer may be on the wrong side of it: that of a wallpaper program that has started or, in layer
/// `bottom`, a panel's. Main thread.
class WaylandBand final : public OverlayPanel {
 public:
  /// For the screen with this number. The references must outlive it.
  WaylandBand(WaylandConnection& connection, WaylandScreenProvider& screens, WallpaperPrograms& wallpapers,
              LayerStacking stacking, std::uint32_t screenNumber, WaylandSurfaceMaker makeSurface);
  ~WaylandBand() override;
  WaylandBand(const WaylandBand&) = delete;
  WaylandBand& operator=(const WaylandBand&) = delete;

  /// Only the height of `frame` counts, and which edge of its screen it is at: a band spans that edge.
  void setFrame(const Rect& frame, double scale) override;
  void setLevel(OverlayLevel level) override;
  void setPixelFormat(gpu::PixelFormat wanted) override;
  void setPreferredFramesPerSecond(double rate) override;
  void setPaused(bool paused) override;
  void setDrawHandler(std::function<void()> handler) override;
  void orderFront() override;
  void orderOut() override;

  gpu::Size drawableSize() const override;
  gpu::PixelFormat colorPixelFormat() const override;
  gpu::Drawable* currentDrawable() override;

 private:
  static const wl_callback_listener frameListener;

  void update();
  void show();
  void hide();
  void remakeAfter(double seconds);
  void configured(std::uint32_t width, std::uint32_t height);
  void closed();
  void configureSurface();
  PanelEdge edgeOf(const Rect& frame) const;
  std::uint32_t layer() const;
  void watchOthers();

  bool ready() const;
  void scheduleFrame();
  void frameAllowed();
  void drawFrame();
  void pictureIsLate();

  WaylandConnection& connection_;
  WaylandScreenProvider& screens_;
  WallpaperPrograms& wallpapers_;
  LayerStacking stacking_;
  std::uint32_t screenNumber_;
  WaylandSurfaceMaker makeSurface_;

  std::unique_ptr<LayerSurface> layer_;
  std::weak_ptr<WaylandOutput> shownOn_;
  WaylandPtr<wp_viewport> viewport_;
  std::unique_ptr<gpu::Surface> surface_;
  WaylandPtr<wl_callback> callback_;  ///< there while the compositor has to ask for the next frame

  std::uint32_t height_ = 0;  ///< points
  PanelEdge edge_ = PanelEdge::top;
  double scale_ = 1;
  std::uint32_t givenWidth_ = 0;  ///< by the compositor, points; 0 before it has
  std::uint32_t givenHeight_ = 0;
  OverlayLevel level_ = OverlayLevel::desktop;
  gpu::PixelFormat wantedFormat_ = gpu::PixelFormat::bgra8Unorm;
  bool paused_ = true;
  bool wanted_ = false;  ///< ordered front
  bool drawing_ = false;
  bool asked_ = false;  ///< the compositor has asked for a frame of this surface

  std::shared_ptr<std::function<void()>> draw_;
  FramePacing pacing_;
  AttemptBudget closedAttempts_{5, 10};
  AttemptBudget firstAttempts_{5, 10};
  OneShot nextFrame_;
  OneShot late_;
  OneShot remaking_;
  std::shared_ptr<void> others_;
  std::shared_ptr<void> refresh_;
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

/// Bands on one Wayland compositor. Main thread.
class WaylandBandFactory final : public OverlayPanelFactory {
 public:
  /// The references must outlive it and its bands. Throws std::runtime_error if the compositor has no layer shell.
  WaylandBandFactory(WaylandConnection& connection, WaylandScreenProvider& screens, LayerStacking stacking,
                     WaylandSurfaceMaker makeSurface);

  std::unique_ptr<OverlayPanel> makePanel(const Screen& screen) override;
  /// No client can see how opaque another one's surface is, so any panel in front gives a hint.
  Visibility visibility(const Screen& screen, const Rect& band, OverlayLevel level) override;

 private:
  WaylandConnection& connection_;
  WaylandScreenProvider& screens_;
  LayerStacking stacking_;
  WaylandSurfaceMaker makeSurface_;
  WallpaperPrograms wallpapers_;
};

}  // namespace veloria
