#include "platform/linux/x11/X11PanelCapture.h"

#include <xcb/composite.h>
#include <xcb/shape.h>

#include <algorithm>
#include <tuple>
#include <utility>

#include "base/Log.h"
#include "platform/linux/x11/X11Docks.h"

namespace veloria {

namespace {

constexpr double shortestPause = 1.0 / 30;
constexpr double keepSeconds = 1;
constexpr double retrySeconds = 0.1;
constexpr int mostRetries = 20;
constexpr double retriesRefillSeconds = 5;
constexpr std::ptrdiff_t mostPanels = 16;
constexpr std::ptrdiff_t mostGonePanels = 4;
constexpr std::int64_t mostStripPixels = std::int64_t{1} << 25;
constexpr std::uint8_t eventCodeMask = 0x7f;
constexpr std::uint8_t colorDepth = 24;
constexpr std::uint8_t alphaDepth = 32;

constexpr const char* noCompositor = "no compositor runs";
constexpr const char* noDisplay = "No capturable display found.";
constexpr const char* noStrip = "the band's strip is empty or too large";

bool capturable(const PixelRect& strip) {
  const auto longest = static_cast<int>(gpu::maxTextureLength);
  return !strip.empty() && strip.width <= longest && strip.height <= longest &&
         std::int64_t{strip.width} * strip.height <= mostStripPixels;
}

bool readable(std::uint8_t depth) {
  return depth == colorDepth || depth == alphaDepth;
}

// Windows may vanish at any moment, so errors of such requests mean nothing.
void ignoreErrors(X11Connection& connection, xcb_void_cookie_t checked) {
  xcb_discard_reply(connection.raw(), checked.sequence);
}

bool overlaps(const PanelPlace& place, const PixelRect& area) {
  return intersects(place.bounds, area);
}

}  // namespace

X11PanelCapture::X11PanelCapture(X11Connection& connection, X11ScreenProvider& screens, MediaClock clock)
    : connection_(connection),
      screens_(screens),
      clock_(std::move(clock)),
      retries_(mostRetries, retriesRefillSeconds) {
  const auto* extension = xcb_get_extension_data(connection_.raw(), &xcb_damage_id);
  if (extension == nullptr || extension->present == 0) return;
  // The extension may not be used before its version has been asked for.
  const auto version =
      connection_.reply(xcb_damage_query_version_reply, xcb_damage_query_version(connection_.raw(), 1, 1));
  damagePresent_ = version != nullptr;
  damageEvent_ = static_cast<std::uint8_t>(extension->first_event + XCB_DAMAGE_NOTIFY);
}

X11PanelCapture::~X11PanelCapture() {
  stop();
}

void X11PanelCapture::start(const BarRegion& region, BarCaptureHandlers handlers) {
  stop();
  running_ = true;
  region_ = region;
  handlers_ = std::move(handlers);
  if (const std::string why = obstacle(); !why.empty()) return fail(why);
  if (!placeStrip()) return;
  pixmap_ = xcb_generate_id(connection_.raw());
  lookNeeded_ = true;
  events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handle(event); });
  compositor_ = connection_.onCompositorChange([this] { compositorChanged(); });
  refresh_ = screens_.onRefresh([this] { screensRefreshed(); });
  schedule(clock_());
  const auto started = handlers_.started;
  if (started) started({static_cast<std::uint32_t>(strip_.width), static_cast<std::uint32_t>(strip_.height)});
}

void X11PanelCapture::stop() {
  if (!running_) return;
  running_ = false;
  events_.reset();
  compositor_.reset();
  refresh_.reset();
  timer_.reset();
  for (const Panel& panel : panels_) forget(panel);
  panels_.clear();
  reader_.reset();
  handlers_ = {};
  composed_ = {};
  handedOn_ = {};
  anyHandedOn_ = false;
  retries_.refill();
  connection_.flush();
}

std::string X11PanelCapture::obstacle() {
  if (!connection_.composite().present) return "the X server lacks Composite (0.2)";
  if (!damagePresent_) return "the X server lacks the DAMAGE extension";
  if (!connection_.compositorRunning()) return noCompositor;
  reader_ = std::make_unique<X11ImageReader>(connection_);
  if (!reader_->understandsPixels()) return "the X server's pixels are not 32-bit BGRA";
  return {};
}

// The same pixels as an overlay window's with this frame: the band is laid over the picture one to one.
PixelRect X11PanelCapture::stripOf(const Screen& screen) const {
  const Rect& rect = region_.rect;
  const Rect points{screen.frame.minX() + rect.x, screen.frame.maxY() - rect.y - rect.height, rect.width, rect.height};
  return screens_.clippedToScreen(screens_.space().toPixels(points, region_.scale));
}

bool X11PanelCapture::placeStrip() {
  const auto screens = screens_.screens();
  if (screens.empty()) {
    fail(noDisplay);
    return false;
  }
  const auto named = std::find_if(screens.begin(), screens.end(),
                                  [&](const Screen& screen) { return screen.number == region_.displayID; });
  strip_ = stripOf(named != screens.end() ? *named : screens.front());
  if (capturable(strip_)) return true;
  fail(noStrip);
  return false;
}

void X11PanelCapture::fail(const std::string& message) {
  const auto failed = handlers_.failed;
  stop();
  if (failed) failed(message);
}

void X11PanelCapture::compositorChanged() {
  if (!connection_.compositorRunning()) fail(noCompositor);
}

void X11PanelCapture::screensRefreshed() {
  const PixelRect before = strip_;
  if (!placeStrip()) return;
  if (strip_ != before) anyHandedOn_ = false;
  lookNeeded_ = true;
  wake();
}

void X11PanelCapture::handle(const xcb_generic_event_t& event) {
  const std::uint8_t code = event.response_type & eventCodeMask;
  if (code == damageEvent_) {
    noteDamage(reinterpret_cast<const xcb_damage_notify_event_t&>(event).damage);
  } else {
    noteStructure(event, code);
  }
}

void X11PanelCapture::noteDamage(xcb_damage_damage_t damage) {
  for (Panel& panel : panels_) {
    if (panel.damage != damage || !panel.present) continue;
    panel.dirty = true;
    wake();
    return;
  }
}

namespace {

/// The window that a change of the windows' tree is about; none for other events.
xcb_window_t changedWindow(const xcb_generic_event_t& event, std::uint8_t code, const X11Extension& shape) {
  if (shape.present && code == shape.firstEvent + XCB_SHAPE_NOTIFY) {
    return reinterpret_cast<const xcb_shape_notify_event_t&>(event).affected_window;
  }
  switch (code) {
    case XCB_CONFIGURE_NOTIFY:
      return reinterpret_cast<const xcb_configure_notify_event_t&>(event).window;
    case XCB_CIRCULATE_NOTIFY:
      return reinterpret_cast<const xcb_circulate_notify_event_t&>(event).window;
    case XCB_MAP_NOTIFY:
      return reinterpret_cast<const xcb_map_notify_event_t&>(event).window;
    case XCB_UNMAP_NOTIFY:
      return reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window;
    case XCB_REPARENT_NOTIFY:
      return reinterpret_cast<const xcb_reparent_notify_event_t&>(event).window;
    case XCB_DESTROY_NOTIFY:
      return reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window;
    default:
      return XCB_WINDOW_NONE;
  }
}

}  // namespace

void X11PanelCapture::noteStructure(const xcb_generic_event_t& event, std::uint8_t code) {
  const xcb_window_t window = changedWindow(event, code, connection_.shape());
  if (window == XCB_WINDOW_NONE) return;
  const auto found = std::find_if(panels_.begin(), panels_.end(), [&](const Panel& panel) {
    return panel.present && (panel.place.window == window || panel.place.topLevel == window);
  });
  if (found == panels_.end()) return;
  // At once: the next window may well get the same number. The server has taken a top-level's damage object along.
  if (code == XCB_DESTROY_NOTIFY) {
    if (found->place.topLevel == window) found->damage = XCB_NONE;
    markGone(*found);
  }
  lookNeeded_ = true;
  wake();
}

void X11PanelCapture::wake() {
  schedule(std::max(clock_(), lastUpdate_ + shortestPause));
}

void X11PanelCapture::schedule(double due) {
  if (timer_ && timerDue_ <= due) return;
  timerDue_ = due;
  timer_ = connection_.timers().after(std::max(due - clock_(), 0.001), [this] { update(); });
}

void X11PanelCapture::update() {
  ++updateCount_;
  lastUpdate_ = clock_();
  if (connection_.isBroken()) return fail("the connection to the X display was lost");
  if (lookNeeded_) look();
  readDirtyPanels();
  sortPanels();
  dropPanels();
  handOn();
}

void X11PanelCapture::look() {
  lookNeeded_ = false;
  const auto stack = topLevelWindows(connection_);
  std::vector<std::pair<xcb_window_t, xcb_window_t>> seen;
  for (const xcb_window_t window : screens_.panels()) {
    auto place = probePanel(connection_, window, stack);
    if (!place) continue;
    seen.emplace_back(place->window, place->topLevel);
    adopt(*std::move(place));
  }
  for (Panel& panel : panels_) {
    const std::pair identity(panel.place.window, panel.place.topLevel);
    if (panel.present && std::count(seen.begin(), seen.end(), identity) == 0) markGone(panel);
  }
}

// Those that are gone lie at the bottom, so that whatever has come in their place hides them.
void X11PanelCapture::sortPanels() {
  const auto key = [](const Panel& panel) { return std::tuple(panel.present, panel.goneSince, panel.place.position); };
  std::stable_sort(panels_.begin(), panels_.end(), [&](const Panel& a, const Panel& b) { return key(a) < key(b); });
}

void X11PanelCapture::adopt(PanelPlace place) {
  const auto known = std::find_if(panels_.begin(), panels_.end(), [&](const Panel& panel) {
    return panel.present && panel.place.window == place.window && panel.place.topLevel == place.topLevel;
  });
  const auto isPresent = [](const Panel& panel) { return panel.present; };
  const bool wanted = overlaps(place, strip_) && readable(place.depth);
  if (known != panels_.end() && !wanted) {
    forget(*known);
    panels_.erase(known);
  } else if (known != panels_.end()) {
    const PixelRect area = intersection(place.bounds, strip_);
    const bool moved = place.bounds != known->place.bounds || area != known->picture.bounds;
    known->place = std::move(place);
    known->picture.shape = known->place.shape;
    known->dirty = known->dirty || moved;
  } else if (wanted && std::count_if(panels_.begin(), panels_.end(), isPresent) < mostPanels) {
    panels_.push_back({.place = std::move(place), .picture = {}});
    watch(panels_.back());
  }
}

void X11PanelCapture::watch(Panel& panel) {
  panel.picture.hasAlpha = panel.place.depth == alphaDepth;
  panel.picture.shape = panel.place.shape;
  panel.damage = xcb_generate_id(connection_.raw());
  ignoreErrors(connection_, xcb_damage_create_checked(connection_.raw(), panel.damage, panel.place.topLevel,
                                                      XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY));
  if (connection_.shape().present) {
    ignoreErrors(connection_, xcb_shape_select_input_checked(connection_.raw(), panel.place.topLevel, 1));
  }
}

void X11PanelCapture::forget(const Panel& panel) {
  if (panel.damage == XCB_NONE) return;
  ignoreErrors(connection_, xcb_damage_destroy_checked(connection_.raw(), panel.damage));
  if (connection_.shape().present) {
    ignoreErrors(connection_, xcb_shape_select_input_checked(connection_.raw(), panel.place.topLevel, 0));
  }
}

void X11PanelCapture::markGone(Panel& panel) {
  forget(panel);
  panel.damage = XCB_NONE;
  panel.present = false;
  panel.dirty = false;
  panel.goneSince = clock_();
}

void X11PanelCapture::readDirtyPanels() {
  for (Panel& panel : panels_) {
    if (panel.dirty && panel.present) read(panel);
  }
}

// The pixmap is named anew each time: a window gets another one whenever it is resized or shown again. The window is
// asked for last, so that what a panel's frame shows after the panel has left it is not taken for the panel.
void X11PanelCapture::read(Panel& panel) {
  auto* raw = connection_.raw();
  panel.dirty = false;
  const PixelRect area = intersection(panel.place.bounds, strip_);
  const PixelRect inWindow{area.x - panel.place.bounds.x, area.y - panel.place.bounds.y, area.width, area.height};
  ignoreErrors(connection_, xcb_damage_subtract_checked(raw, panel.damage, XCB_NONE, XCB_NONE));
  ignoreErrors(connection_, xcb_composite_name_window_pixmap_checked(raw, panel.place.topLevel, pixmap_));
  const auto request = reader_->request(pixmap_, inWindow);
  const auto attributesCookie = xcb_get_window_attributes(raw, panel.place.window);
  ignoreErrors(connection_, xcb_free_pixmap_checked(raw, pixmap_));
  std::vector<std::byte> pixels;
  const bool got = reader_->collect(request, pixels);
  const auto attributes = connection_.reply(xcb_get_window_attributes_reply, attributesCookie);
  if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE) return markGone(panel);
  if (got) {
    panel.picture.bounds = area;
    panel.picture.pixels = std::move(pixels);
    return;
  }
  // Resized a moment ago, or not redirected yet by a compositor that is just starting.
  if (!retries_.spend(clock_())) return;
  panel.dirty = true;
  lookNeeded_ = true;
  schedule(clock_() + retrySeconds);
}

void X11PanelCapture::dropPanels() {
  const double now = clock_();
  std::erase_if(panels_, [&](const Panel& panel) { return !panel.present && now >= panel.goneSince + keepSeconds; });
  const auto present =
      std::partition_point(panels_.begin(), panels_.end(), [](const Panel& each) { return !each.present; });
  if (present - panels_.begin() > mostGonePanels) panels_.erase(panels_.begin(), present - mostGonePanels);
  for (const Panel& panel : panels_) {
    if (!panel.present) schedule(panel.goneSince + keepSeconds);
  }
}

void X11PanelCapture::handOn() {
  std::vector<const PanelPicture*> pictures;
  for (const Panel& panel : panels_) pictures.push_back(&panel.picture);
  composePanels(strip_, pictures, composed_);
  hidePanelEdges(strip_, pictures, composed_);
  if (anyHandedOn_ && composed_ == handedOn_) return;
  anyHandedOn_ = true;
  handedOn_.swap(composed_);
  const auto picture = handlers_.picture;
  // The handler may stop the stream, which lets the bytes go.
  const std::vector<std::byte> rows = handedOn_;
  if (picture) picture({{static_cast<std::uint32_t>(strip_.width), static_cast<std::uint32_t>(strip_.height)}, rows});
}

}  // namespace veloria
