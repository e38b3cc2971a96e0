#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "desktop/DesktopSession.h"
#include "platform/qt/QtTimerFactory.h"
#include "platform/linux/x11/X11OverlayPanelFactory.h"

namespace veloria::desktop {

constexpr Pixel bandColour{0x20, 0xE0, 0x60};

inline bool isBand(const Pixel& pixel) {
  return pixel == bandColour;
}

/// A surface without a GPU: each drawable asked for fills the window with bandColour.
class SolidSurface final : public gpu::Surface {
 public:
  SolidSurface(xcb_connection_t* connection, xcb_window_t window);
  ~SolidSurface() override;
  void configure(gpu::Size size, gpu::PixelFormat wanted) override;
  gpu::PixelFormat format() const override { return gpu::PixelFormat::bgra8Unorm; }
  gpu::Size size() const override { return size_; }
  gpu::Drawable* nextDrawable() override;

 private:
  xcb_connection_t* connection_;
  xcb_window_t window_;
  xcb_gcontext_t context_;
  gpu::Size size_;
};

/// The program's X11 side on a private desktop, run by a real event loop.
class X11Test : public testing::Test {
 protected:
  /// Starts the desktop's server, or skips the test when a program is missing.
  void startDesktop(const std::vector<std::string>& programs, const DesktopSession::Options& options = {});
  /// Connects and reads the screens; afterwards every wait of `desktop()` runs the event loop.
  void connect();
  /// A panel on the strip of `height` points at the top of the first screen, shown and drawing.
  std::unique_ptr<X11OverlayPanel> showBand(OverlayLevel level, double height = 32);
  std::unique_ptr<X11OverlayPanel> showBandOn(const Screen& screen, OverlayLevel level, double height = 32);
  void TearDown() override;

  bool waitUntil(const std::function<bool()>& condition, double seconds = 10);
  void runFor(double seconds);
  DesktopSession& desktop() { return *desktop_; }

  /// An ordinary window of another program, mapped, filled with white; it records clicks.
  xcb_window_t openWindow(int x, int y, int width, int height);
  /// A panel of another program at the top, `height` pixels tall, with its strut, filled with one colour; with an alpha
  /// channel when `alpha` is below 1.
  xcb_window_t openDock(int height, double alpha = 1);
  void keepPosition(xcb_window_t window);
  /// Takes a window of openWindow() or openDock() away.
  void closeWindow(xcb_window_t window);
  /// Clicks that came to openWindow()'s windows since the last call.
  int clicks(xcb_window_t window);

  bool isVisibleAt(int x, int y);
  /// The position of a window's top-level in the stack, 0 at the bottom; -1 when it isn't mapped.
  int stackPosition(xcb_window_t window);
  /// The first panel of another program; none while there is none.
  xcb_window_t panelWindow();
  bool isAbove(xcb_window_t upper, xcb_window_t lower);
  void setNumbers(xcb_window_t window, const std::string& property, xcb_atom_t type,
                  const std::vector<std::uint32_t>& values);
  bool bandIsAt(const PixelRect& place);

  std::unique_ptr<DesktopSession> desktop_;
  QtTimerFactory timers_;
  std::unique_ptr<X11Connection> connection_;
  std::unique_ptr<X11ScreenProvider> screens_;
  std::unique_ptr<X11OverlayPanelFactory> factory_;
  std::string brokenWith_;
  int framesDrawn_ = 0;
};

}  // namespace veloria::desktop
