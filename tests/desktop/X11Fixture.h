#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <algorithm>

#include "desktop/DesktopSession.h"
#include "platform/linux/x11/X11BandFactory.h"
#include "platform/qt/QtEventLoop.h"

namespace veloria::tests {

constexpr Pixel bandColor{0x20, 0xE0, 0x60};
constexpr PixelRect stripPixels{0, 0, 1920, 32};

inline void runEventLoop() {
  static int argc = 1;
  static char name[] = "desktop-test";
  static char* argv[] = {name, nullptr};
  static QCoreApplication application(argc, argv);
  QCoreApplication::processEvents();
}

/// Fills its window with bandColor.
class SolidSurface final : public gpu::Surface {
 public:
  SolidSurface(xcb_connection_t* connection, xcb_window_t window)
      : connection_(connection), window_(window), context_(xcb_generate_id(connection)) {
    const std::uint32_t color = 0xFF000000U | bandColor.red << 16U | bandColor.green << 8U | bandColor.blue;
    xcb_create_gc(connection_, context_, window_, XCB_GC_FOREGROUND, &color);
  }
  ~SolidSurface() override { xcb_free_gc(connection_, context_); }
  void configure(gpu::Size size, gpu::PixelFormat) override { size_ = size; }
  gpu::PixelFormat format() const override { return gpu::PixelFormat::bgra8Unorm; }
  gpu::Size size() const override { return size_; }
  gpu::Drawable* nextDrawable() override {
    const xcb_rectangle_t all{0, 0, static_cast<std::uint16_t>(size_.width), static_cast<std::uint16_t>(size_.height)};
    xcb_poly_fill_rectangle(connection_, window_, context_, 1, &all);
    xcb_flush(connection_);
    return nullptr;
  }

 private:
  xcb_connection_t* connection_;
  xcb_window_t window_;
  xcb_gcontext_t context_;
  gpu::Size size_;
};

struct DesktopSetup {
  std::string windowManager = {};  ///< empty: none
  bool compositor = false;
  DesktopSession::Options options = {};
};

/// The program's X11 side on a private desktop, run by a real event loop. Its bands draw without a GPU, on
/// SolidSurface.
class X11Test : public testing::Test {
 protected:
  /// Skips the test if a program that these tests use is missing.
  void SetUp() override {
    const auto missing =
        DesktopSession::missing({"openbox", "xfwm4", "dbus-run-session", "tint2", "picom", "xdotool", "xrandr"});
    if (!missing.empty()) GTEST_SKIP() << missing;
  }
  void startDesktop(const DesktopSetup& desk) {
    runEventLoop();
    desktop_ = std::make_unique<DesktopSession>(desk.options);
    if (!desk.windowManager.empty()) desktop_->startWindowManager(desk.windowManager);
    if (desk.compositor) desktop_->startCompositor();
  }
  /// Connects and reads the screens; afterwards every wait runs the event loop.
  void connect() {
    connection_ = std::make_unique<X11Connection>(desktop_->display(), watchDescriptor, timers_);
    connection_->setBrokenHandler([this](const std::string& text) { brokenWith_ += text; });
    screens_ = std::make_unique<X11ScreenProvider>(*connection_, ScreenOverrides{});
    factory_ = std::make_unique<X11BandFactory>(*connection_, *screens_, [](auto* connection, auto window) {
      return std::make_unique<SolidSurface>(connection, window);
    });
    desktop_->setIdle(runEventLoop);
  }
  void TearDown() override {
    factory_.reset();
    screens_.reset();
    connection_.reset();
    desktop_.reset();
  }

  DesktopSession& desktop() { return *desktop_; }
  bool waitUntil(const std::function<bool()>& condition, double seconds = 10) {
    return desktop_->waitUntil(condition, seconds);
  }
  void runFor(double seconds) {
    waitUntil([] { return false; }, seconds);
  }

  /// A band on the strip of `height` points at the top of a screen (the first one), shown and drawing.
  std::unique_ptr<X11Band> showBand(OverlayLevel level, double height = 32, std::size_t screen = 0) {
    const Screen on = screens_->screens().at(screen);
    std::unique_ptr<X11Band> band(static_cast<X11Band*>(factory_->makePanel(on).release()));
    band->setFrame({on.frame.x, on.frame.maxY() - height, on.frame.width, height}, on.backingScale);
    band->setLevel(level);
    band->setPixelFormat(gpu::PixelFormat::bgra8Unorm);
    band->setPreferredFramesPerSecond(60);
    band->setDrawHandler([this, target = band.get()] {
      ++framesDrawn_;
      target->currentDrawable();
    });
    band->setPaused(false);
    band->orderFront();
    return band;
  }
  bool bandIsAt(const PixelRect& place) {
    const auto windows = desktop_->windows();
    return std::any_of(windows.begin(), windows.end(), [&](const WindowInfo& each) {
      return each.name == "Veloria" && PixelRect{each.x, each.y, each.width, each.height} == place;
    });
  }
  bool isVisibleAt(int x, int y) { return desktop_->screenshot().at(x, y) == bandColor; }

  /// An ordinary window of another program, mapped, filled with white; it records clicks.
  xcb_window_t openWindow(const PixelRect& place, const std::string& type = "NORMAL") {
    const xcb_window_t window = createWindow(place, 0xFFFFFF, false);
    setNumbers(window, "_MOTIF_WM_HINTS", desktop_->atom("_MOTIF_WM_HINTS"), {2, 0, 0, 0, 0});
    setNumbers(window, "WM_HINTS", XCB_ATOM_WM_HINTS, {1, 1, 0, 0, 0, 0, 0, 0, 0});  // it takes the focus
    setType(window, type);
    map(window);
    return window;
  }
  /// A panel of another program at the top, `height` pixels tall, with its strut, filled with one colour; with an alpha
  /// channel if `alpha` is below 1.
  xcb_window_t openDock(int height, double alpha = 1) {
    const auto shade = static_cast<std::uint32_t>(alpha * 255);
    const std::uint32_t argb = shade << 24 | shade / 4 << 16 | shade / 4 << 8 | shade / 4;
    const xcb_window_t window = createWindow({0, 0, 1920, height}, argb, alpha < 1);
    setType(window, "DOCK");
    setNumbers(window, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL,
               {0, 0, static_cast<std::uint32_t>(height), 0, 0, 0, 0, 0, 0, 1919, 0, 0});
    map(window);
    return window;
  }
  /// A dock that no window manager places or stacks.
  xcb_window_t openFreeDock(const PixelRect& place, std::uint32_t argb, bool alpha = false) {
    const xcb_window_t window = createWindow(place, argb, alpha, true);
    setType(window, "DOCK");
    map(window);
    return window;
  }
  void closeWindow(xcb_window_t window) {
    xcb_destroy_window(desktop_->observer(), window);
    xcb_flush(desktop_->observer());
  }
  void map(xcb_window_t window) {  ///< waits until it is
    xcb_map_window(desktop_->observer(), window);
    xcb_flush(desktop_->observer());
    waitUntil([&] { return stackPosition(window) >= 0; });
  }
  void unmap(xcb_window_t window) {
    xcb_unmap_window(desktop_->observer(), window);
    xcb_flush(desktop_->observer());
  }
  /// Whether one of openWindow()'s windows was clicked since the last call.
  bool wasClicked(xcb_window_t window) {
    const XcbPtr<xcb_generic_event_t> event{xcb_poll_for_event(desktop_->observer())};
    return event && (event->response_type & 0x7f) == XCB_BUTTON_PRESS &&
           reinterpret_cast<xcb_button_press_event_t*>(event.get())->event == window;
  }

  /// The position of a window's top-level in the stack, 0 at the bottom; -1 if it isn't mapped.
  int stackPosition(xcb_window_t window) {
    const auto windows = desktop_->windows();
    const auto found =
        std::find_if(windows.begin(), windows.end(), [&](const auto& each) { return each.id == window; });
    return found != windows.end() ? found->level : -1;
  }
  bool isAbove(xcb_window_t upper, xcb_window_t lower) {
    const int low = stackPosition(lower);
    return low >= 0 && stackPosition(upper) > low;
  }
  /// The panel: the first dock of another program; none if there is none.
  xcb_window_t panelWindow() {
    for (const WindowInfo& each : desktop_->windows()) {
      if (each.name != "Veloria" && hasAtom(each.id, "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DOCK")) return each.id;
    }
    return XCB_WINDOW_NONE;
  }
  bool hasAtom(xcb_window_t window, const std::string& property, const std::string& atom) {
    const auto atoms = desktop_->property(window, property);
    return std::find(atoms.begin(), atoms.end(), desktop_->atom(atom)) != atoms.end();
  }
  void setNumbers(xcb_window_t window, const std::string& property, xcb_atom_t type,
                  const std::vector<std::uint32_t>& values) {
    xcb_change_property(desktop_->observer(), XCB_PROP_MODE_REPLACE, window, desktop_->atom(property), type, 32,
                        static_cast<std::uint32_t>(values.size()), values.data());
    xcb_flush(desktop_->observer());
  }
  void setType(xcb_window_t window, const std::string& type) {
    setNumbers(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {desktop_->atom("_NET_WM_WINDOW_TYPE_" + type)});
  }
  void setResources(const std::string& text) {
    xcb_change_property(desktop_->observer(), XCB_PROP_MODE_REPLACE, desktop_->root(), XCB_ATOM_RESOURCE_MANAGER,
                        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(text.size()), text.data());
    xcb_flush(desktop_->observer());
  }
  /// Sends a client message about a window to the root window, as programs ask a window manager for something.
  void ask(xcb_window_t window, const std::string& type, const std::array<std::uint32_t, 5>& data) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = desktop_->atom(type);
    std::copy(data.begin(), data.end(), event.data.data32);
    xcb_send_event(desktop_->observer(), 0, desktop_->root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(desktop_->observer());
  }
  void setFullScreen(xcb_window_t window, bool on) {
    ask(window, "_NET_WM_STATE", {on ? 1U : 0U, desktop_->atom("_NET_WM_STATE_FULLSCREEN"), 0, 1, 0});
  }
  /// Divides the screen of 1920 pixels into the monitors "left", 961 pixels wide, and "right".
  void splitScreen() {
    desktop_->runToEnd({"xrandr", "--setmonitor", "left", "961/254x1080/286+0+0", "screen", "--setmonitor", "right",
                        "959/254x1080/286+961+0", "none"});
  }

  std::unique_ptr<DesktopSession> desktop_;
  QtTimerFactory timers_;
  std::unique_ptr<X11Connection> connection_;
  std::unique_ptr<X11ScreenProvider> screens_;
  std::unique_ptr<X11BandFactory> factory_;
  std::string brokenWith_;
  int framesDrawn_ = 0;

 private:
  xcb_window_t createWindow(const PixelRect& place, std::uint32_t argb, bool alpha, bool free = false) {
    auto* connection = desktop_->observer();
    const auto& screen = connection_->screen();
    const auto visual =
        alpha ? factory_->visual() : decltype(factory_->visual()){screen.root_depth, screen.root_visual, 0};
    const xcb_window_t window = xcb_generate_id(connection);
    const xcb_colormap_t colormap = xcb_generate_id(connection);
    xcb_create_colormap(connection, XCB_COLORMAP_ALLOC_NONE, colormap, screen.root, visual.visual);
    const std::uint32_t values[] = {argb, 0, free ? 1U : 0U, XCB_EVENT_MASK_BUTTON_PRESS, colormap};
    xcb_create_window(
        connection, visual.depth, window, screen.root, static_cast<std::int16_t>(place.x),
        static_cast<std::int16_t>(place.y), static_cast<std::uint16_t>(place.width),
        static_cast<std::uint16_t>(place.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual.visual,
        XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
        values);
    std::vector<std::uint32_t> sizeHints(18);
    sizeHints[0] = 3;  // the user's position and size
    setNumbers(window, "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS, sizeHints);
    return window;
  }
};

}  // namespace veloria::tests
