#pragma once

#include <gtest/gtest.h>

#include "desktop/DesktopSession.h"
#include "platform/linux/x11/X11BandFactory.h"
#include "platform/qt/QtEventLoop.h"

namespace veloria::tests {

constexpr Pixel bandColor{0x20, 0xE0, 0x60};
constexpr PixelRect stripPixels{0, 0, 1920, 32};

/// What a test wants on its desktop.
struct Desk {
  std::string windowManager = {};  ///< empty: none
  bool compositor = false;
  DesktopSession::Options options = {};
};

/// The program's X11 side on a private desktop, run by a real event loop. Its bands draw without a GPU: each drawable
/// that is asked for fills the window with bandColor.
class X11Test : public testing::Test {
 protected:
  /// Skips the test if a program that these tests use is missing.
  void SetUp() override;
  void startDesktop(const Desk& desk);
  /// Connects and reads the screens; afterwards every wait runs the event loop.
  void connect();
  void TearDown() override;

  DesktopSession& desktop() { return *desktop_; }
  bool waitUntil(const std::function<bool()>& condition, double seconds = 10) {
    return desktop_->waitUntil(condition, seconds);
  }
  void runFor(double seconds);

  /// A band on the strip of `height` points at the top of a screen (the first one), shown and drawing.
  std::unique_ptr<X11Band> showBand(OverlayLevel level, double height = 32, std::size_t screen = 0);
  bool bandIsAt(const PixelRect& place);
  bool isVisibleAt(int x, int y) { return desktop_->screenshot().at(x, y) == bandColor; }

  /// An ordinary window of another program, mapped, filled with white; it records clicks.
  xcb_window_t openWindow(const PixelRect& place);
  /// A panel of another program at the top, `height` pixels tall, with its strut, filled with one colour; with an alpha
  /// channel if `alpha` is below 1.
  xcb_window_t openDock(int height, double alpha = 1);
  /// A dock that no window manager places or stacks.
  xcb_window_t openFreeDock(const PixelRect& place, std::uint32_t argb, bool alpha = false);
  /// Takes a window of these away.
  void closeWindow(xcb_window_t window);
  void unmap(xcb_window_t window);
  /// Clicks that came to openWindow()'s windows since the last call.
  int clicks(xcb_window_t window);

  /// The position of a window's top-level in the stack, 0 at the bottom; -1 if it isn't mapped.
  int stackPosition(xcb_window_t window);
  bool isAbove(xcb_window_t upper, xcb_window_t lower);
  /// The panel: the first dock of another program; none if there is none.
  xcb_window_t panelWindow();
  bool hasAtom(xcb_window_t window, const std::string& property, const std::string& atom);
  void setNumbers(xcb_window_t window, const std::string& property, xcb_atom_t type,
                  const std::vector<std::uint32_t>& values);
  void setType(xcb_window_t window, const std::string& type);
  void setResources(const std::string& text);
  /// Sends a client message about a window to the root window, as programs ask a window manager for something.
  void ask(xcb_window_t window, const std::string& type, const std::array<std::uint32_t, 5>& data);
  void setFullScreen(xcb_window_t window, bool on);
  /// Divides the screen of 1920 pixels into the monitors "left" and "right", the left one `width` pixels wide.
  void splitScreen(int width = 961);

  std::unique_ptr<DesktopSession> desktop_;
  QtTimerFactory timers_;
  std::unique_ptr<X11Connection> connection_;
  std::unique_ptr<X11ScreenProvider> screens_;
  std::unique_ptr<X11BandFactory> factory_;
  std::string brokenWith_;
  int framesDrawn_ = 0;

 private:
  xcb_window_t createWindow(const PixelRect& place, std::uint32_t argb, bool alpha, bool free = false);
  void map(xcb_window_t window);
};

}  // namespace veloria::tests
