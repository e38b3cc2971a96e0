#pragma once

#include <functional>
#include <memory>

#include "gpu/Surface.h"
#include "platform/linux/screens/AttemptBudget.h"
#include "platform/linux/wayland/FramePacing.h"
#include "platform/linux/wayland/LayerSurface.h"
#include "platform/linux/wayland/WallpaperPrograms.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandScreenProvider.h"
#include "ports/OverlayPanel.h"

namespace veloria {

/// Makes what is drawn into a surface. May return nullptr (then nothing is ever drawn) and may throw std::exception.
using WaylandSurfaceMaker = std::function<std::unique_ptr<gpu::Surface>(wl_display*, wl_surface*)>;

/// A surface of the layer shell, at the top of one output: layer `overlay` above the menu bar; for the desktop layer
/// `background`, or `bottom` where the newest surface of a layer is the lowest, since there nothing new can be seen
/// over a wallpaper in its own layer. It exists only while it is shown; a change of level makes a new one. Frames come
/// at the slower of the wanted rate and the compositor's: while it asks for none (the output is off, or a window covers
/// it) nothing is drawn, nothing waits and nothing wakes up. At the desktop level it is made again when somebody's
/// surface in its layer may have come to lie on the wrong side of it: a wallpaper program's that has started or, in
/// layer `bottom`, a panel's. Main thread.
class WaylandOverlayPanel final : public OverlayPanel {
 public:
  /// For the screen with this number. The references must outlive it.
  WaylandOverlayPanel(WaylandConnection& connection, WaylandScreenProvider& screens, WallpaperPrograms& wallpapers,
                      LayerStacking stacking, std::uint32_t screenNumber, WaylandSurfaceMaker makeSurface);
  ~WaylandOverlayPanel() override;
  WaylandOverlayPanel(const WaylandOverlayPanel&) = delete;
  WaylandOverlayPanel& operator=(const WaylandOverlayPanel&) = delete;

  /// Only the height of `frame` counts: a panel spans the top of its screen.
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
  std::uint32_t layer() const;
  void watchOthers();

  bool ready() const;
  void scheduleFrame();
  void frameAllowed();
  void drawFrame();

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
  double scale_ = 1;
  std::uint32_t givenWidth_ = 0;  ///< by the compositor, points; 0 before it has
  std::uint32_t givenHeight_ = 0;
  OverlayLevel level_ = OverlayLevel::desktop;
  gpu::PixelFormat wantedFormat_ = gpu::PixelFormat::bgra8Unorm;
  bool paused_ = true;
  bool wanted_ = false;  ///< ordered front
  bool drawing_ = false;

  std::shared_ptr<std::function<void()>> draw_;
  FramePacing pacing_;
  AttemptBudget closedAttempts_{5, 10};
  OneShot nextFrame_;
  OneShot remaking_;
  std::shared_ptr<void> others_;
  std::shared_ptr<void> refresh_;
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

}  // namespace veloria
