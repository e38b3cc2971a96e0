#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "gpu/Surface.h"
#include "platform/linux/screens/Pacing.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11ScreenProvider.h"
#include "platform/linux/x11/X11WindowManager.h"
#include "ports/OverlayPanel.h"

namespace veloria {

/// Makes the surface of a window. May return nullptr (then nothing is ever drawn) and may throw std::exception.
using SurfaceMaker = std::function<std::unique_ptr<gpu::Surface>(xcb_connection_t*, xcb_window_t)>;

/// The kind of window that bands are: with an alpha channel if the server offers it, else of the root's kind.
struct BandVisual {
  std::uint8_t depth = 0;
  xcb_visualid_t visual = 0;
  xcb_colormap_t colormap = XCB_COLORMAP_NONE;  ///< none: the root's own
};

/// The band's window on an X server. It defends its place in the stack and on the screen against window managers that
/// start, stop or move it (with a bounded number of attempts), and makes a new window if another program destroys it.
/// Main thread.
class X11Band final : public OverlayPanel {
 public:
  /// The references must outlive it. Throws std::runtime_error.
  X11Band(X11Connection& connection, X11ScreenProvider& screens, const BandVisual& visual, SurfaceMaker makeSurface);
  ~X11Band() override;
  X11Band(const X11Band&) = delete;
  X11Band& operator=(const X11Band&) = delete;

  /// What reaches beyond the screen is cut off.
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

  /// The window now; another one after a program has destroyed it.
  xcb_window_t window() const { return window_; }
  /// Where the window should be, root pixels.
  const PixelRect& place() const { return place_; }

 private:
  // A window must be forgotten by the window manager (its WM_STATE goes) before it may be mapped with new hints.
  enum class Phase { withdrawn, withdrawing, mapped };

  void createWindow();
  void createSurface();
  void recreate();
  void applyPlace();
  void applyVisibility();
  void map();
  void withdraw();
  void finishWithdrawing();
  void remap();
  void configureSurface();
  void updateTimer();
  void drawFrame();

  void handle(const xcb_generic_event_t& event);
  void handleProperty(const xcb_property_notify_event_t& event);
  void handleRootProperty(xcb_atom_t changed);
  void handleObscured(bool obscured);
  void readManagedState();

  void screensRefreshed();
  static constexpr double verificationDelay = 0.1;  ///< seconds; one check for a burst of changes
  void scheduleVerification(double delay = verificationDelay);
  void verify();
  bool verifyMapped();
  void verifyPlace();
  void verifyStates();
  void verifyStacking();
  void restackAt(xcb_timestamp_t time);

  X11Connection& connection_;
  X11ScreenProvider& screens_;
  BandVisual visual_;
  SurfaceMaker makeSurface_;
  xcb_window_t window_ = XCB_WINDOW_NONE;
  std::unique_ptr<gpu::Surface> surface_;

  Rect frame_;
  double scale_ = 1;
  PixelRect place_;
  OverlayLevel level_ = OverlayLevel::desktop;
  gpu::PixelFormat wantedFormat_ = gpu::PixelFormat::bgra8Unorm;
  double rate_ = 60;
  bool paused_ = true;
  bool wanted_ = false;  ///< ordered front
  Phase phase_ = Phase::withdrawn;
  bool managed_ = false;  ///< a window manager has set WM_STATE
  bool obscured_ = false;

  std::shared_ptr<std::function<void()>> draw_;
  double timerRate_ = 0;
  AttemptBudget mapAttempts_{5, 10};
  AttemptBudget placeAttempts_{5, 10};
  AttemptBudget stackAttempts_{5, 10};
  AttemptBudget stateAttempts_{5, 10};
  AttemptBudget recreateAttempts_{5, 10};
  std::unique_ptr<Timer> frameTimer_;
  OneShot verification_;
  double pendingDelay_ = 0;
  OneShot withdrawal_;
  OneShot remapping_;
  std::optional<Restacking> restacking_;  ///< waits for the server's time
  X11Connection::Subscription events_;
  std::shared_ptr<void> refresh_;
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

}  // namespace veloria
