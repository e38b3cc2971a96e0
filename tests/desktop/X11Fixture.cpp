#include "X11Fixture.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <algorithm>

#include "platform/qt/DescriptorWatch.h"

namespace veloria::desktop {

namespace {

void runEventLoop() {
  static int argc = 1;
  static char name[] = "desktop-test";
  static char* argv[] = {name, nullptr};
  static QCoreApplication application(argc, argv);
  QCoreApplication::processEvents(QEventLoop::AllEvents);
}

constexpr std::uint32_t userPosition = 1;
constexpr std::uint32_t userSize = 2;
constexpr std::uint32_t inputHint = 1;

std::uint32_t argb(const Pixel& pixel) {
  return 0xFF000000U | static_cast<std::uint32_t>(pixel.red) << 16 | static_cast<std::uint32_t>(pixel.green) << 8 |
         pixel.blue;
}

}  // namespace

SolidSurface::SolidSurface(xcb_connection_t* connection, xcb_window_t window)
    : connection_(connection), window_(window), context_(xcb_generate_id(connection)) {
  const std::uint32_t colour = argb(bandColour);
  xcb_create_gc(connection_, context_, window_, XCB_GC_FOREGROUND, &colour);
}

SolidSurface::~SolidSurface() {
  xcb_free_gc(connection_, context_);
}

void SolidSurface::configure(gpu::Size size, gpu::PixelFormat) {
  size_ = size;
}

gpu::Drawable* SolidSurface::nextDrawable() {
  const xcb_rectangle_t all{0, 0, static_cast<std::uint16_t>(size_.width), static_cast<std::uint16_t>(size_.height)};
  xcb_poly_fill_rectangle(connection_, window_, context_, 1, &all);
  xcb_flush(connection_);
  return nullptr;
}

void X11Test::startDesktop(const std::vector<std::string>& programs, const DesktopSession::Options& options) {
  if (const std::string missing = DesktopSession::missing(programs); !missing.empty()) GTEST_SKIP() << missing;
  runEventLoop();
  desktop_ = std::make_unique<DesktopSession>(options);
}

void X11Test::connect() {
  connection_ = std::make_unique<X11Connection>(desktop().display(), watchDescriptor, timers_);
  connection_->setBrokenHandler([this](const std::string& text) { brokenWith_ = text; });
  screens_ = std::make_unique<X11ScreenProvider>(*connection_, ScreenOverrides{});
  factory_ = std::make_unique<X11OverlayPanelFactory>(*connection_, *screens_, [](auto* connection, auto window) {
    return std::make_unique<SolidSurface>(connection, window);
  });
  desktop().setIdle(runEventLoop);
}

void X11Test::TearDown() {
  factory_.reset();
  screens_.reset();
  connection_.reset();
  desktop_.reset();
}

std::unique_ptr<X11OverlayPanel> X11Test::showBand(OverlayLevel level, double height) {
  return showBandOn(screens_->screens().at(0), level, height);
}

std::unique_ptr<X11OverlayPanel> X11Test::showBandOn(const Screen& screen, OverlayLevel level, double height) {
  auto panel = std::unique_ptr<X11OverlayPanel>(static_cast<X11OverlayPanel*>(factory_->makePanel(screen).release()));
  const Rect& frame = screen.frame;
  panel->setFrame({frame.x, frame.maxY() - height, frame.width, height}, screen.backingScale);
  panel->setLevel(level);
  panel->setPixelFormat(gpu::PixelFormat::bgra8Unorm);
  panel->setPreferredFramesPerSecond(60);
  panel->setDrawHandler([this, target = panel.get()] {
    ++framesDrawn_;
    target->currentDrawable();
  });
  panel->setPaused(false);
  panel->orderFront();
  return panel;
}

bool X11Test::waitUntil(const std::function<bool()>& condition, double seconds) {
  return desktop().waitUntil(condition, seconds);
}

void X11Test::runFor(double seconds) {
  waitUntil([] { return false; }, seconds);
}

xcb_window_t X11Test::openWindow(int x, int y, int width, int height) {
  auto* connection = desktop().observer();
  const xcb_window_t window = xcb_generate_id(connection);
  const std::uint32_t values[] = {0xFFFFFF, XCB_EVENT_MASK_BUTTON_PRESS};
  xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, desktop().root(), static_cast<std::int16_t>(x),
                    static_cast<std::int16_t>(y), static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height),
                    0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK,
                    values);
  setNumbers(window, "_MOTIF_WM_HINTS", desktop().atom("_MOTIF_WM_HINTS"), {2, 0, 0, 0, 0});
  keepPosition(window);
  setNumbers(window, "WM_HINTS", XCB_ATOM_WM_HINTS, {inputHint, 1, 0, 0, 0, 0, 0, 0, 0});
  xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 5, "other");
  xcb_map_window(connection, window);
  xcb_flush(connection);
  waitUntil([&] { return stackPosition(window) >= 0; });
  return window;
}

xcb_window_t X11Test::openDock(int height, double alpha) {
  auto* connection = desktop().observer();
  const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
  const PanelVisual visual = alpha < 1 ? factory_->visual() : PanelVisual{screen->root_depth, screen->root_visual, 0};
  const xcb_colormap_t colormap = xcb_generate_id(connection);
  xcb_create_colormap(connection, XCB_COLORMAP_ALLOC_NONE, colormap, screen->root, visual.visual);
  const auto shade = static_cast<std::uint32_t>(alpha * 255);
  const xcb_window_t window = xcb_generate_id(connection);
  const std::uint32_t values[] = {shade << 24 | shade / 4 << 16 | shade / 4 << 8 | shade / 4, 0, colormap};
  const std::uint16_t width = screen->width_in_pixels;
  xcb_create_window(connection, visual.depth, window, screen->root, 0, 0, width, static_cast<std::uint16_t>(height), 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, visual.visual,
                    XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_COLORMAP, values);
  setNumbers(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {desktop().atom("_NET_WM_WINDOW_TYPE_DOCK")});
  setNumbers(window, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL,
             {0, 0, static_cast<std::uint32_t>(height), 0, 0, 0, 0, 0, 0, width - 1U, 0, 0});
  keepPosition(window);
  xcb_map_window(connection, window);
  xcb_flush(connection);
  waitUntil([&] { return stackPosition(window) >= 0; });
  return window;
}

void X11Test::keepPosition(xcb_window_t window) {
  std::vector<std::uint32_t> sizeHints(18);
  sizeHints[0] = userPosition | userSize;
  setNumbers(window, "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS, sizeHints);
}

void X11Test::closeWindow(xcb_window_t window) {
  xcb_destroy_window(desktop().observer(), window);
  xcb_flush(desktop().observer());
}

void X11Test::setNumbers(xcb_window_t window, const std::string& property, xcb_atom_t type,
                         const std::vector<std::uint32_t>& values) {
  xcb_change_property(desktop().observer(), XCB_PROP_MODE_REPLACE, window, desktop().atom(property), type, 32,
                      static_cast<std::uint32_t>(values.size()), values.data());
  xcb_flush(desktop().observer());
}

bool X11Test::isAbove(xcb_window_t upper, xcb_window_t lower) {
  const int low = stackPosition(lower);
  return low >= 0 && stackPosition(upper) > low;
}

int X11Test::clicks(xcb_window_t window) {
  int count = 0;
  while (auto* event = xcb_poll_for_event(desktop().observer())) {
    const XcbPtr<xcb_generic_event_t> owned(event);
    if ((event->response_type & 0x7f) != XCB_BUTTON_PRESS) continue;
    if (reinterpret_cast<xcb_button_press_event_t*>(event)->event == window) ++count;
  }
  return count;
}

bool X11Test::isVisibleAt(int x, int y) {
  return isBand(desktop().screenshot().at(x, y));
}

int X11Test::stackPosition(xcb_window_t window) {
  const auto windows = desktop().windows();
  int position = -1;
  xcb_window_t topLevel = XCB_WINDOW_NONE;
  for (const WindowInfo& each : windows) {
    if (each.topLevel != topLevel) ++position;
    topLevel = each.topLevel;
    if (each.id == window) return position;
  }
  return -1;
}

xcb_window_t X11Test::panelWindow() {
  for (const WindowInfo& each : desktop().windows()) {
    const auto types = desktop().atomProperty(each.id, "_NET_WM_WINDOW_TYPE");
    const bool dock = std::find(types.begin(), types.end(), "_NET_WM_WINDOW_TYPE_DOCK") != types.end();
    if (dock && each.name != "Veloria") return each.id;
  }
  return XCB_WINDOW_NONE;
}

bool X11Test::bandIsAt(const PixelRect& place) {
  for (const WindowInfo& each : desktop().windows()) {
    if (each.name == "Veloria" && PixelRect{each.x, each.y, each.width, each.height} == place) return true;
  }
  return false;
}

}  // namespace veloria::desktop
