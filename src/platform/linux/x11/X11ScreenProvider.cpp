#include "platform/linux/x11/X11ScreenProvider.h"

#include <xcb/randr.h>

#include <algorithm>
#include <utility>

#include "base/Log.h"
#include "platform/linux/x11/X11Docks.h"

namespace veloria {

namespace {

constexpr std::uint32_t longestResources = 65536;  // words
constexpr std::uint8_t eventCodeMask = 0x7f;

/// The primary one first.
std::vector<MonitorDescription> randrMonitors(X11Connection& connection) {
  auto found = connection.monitors();
  std::stable_partition(found.begin(), found.end(), [](const X11Monitor& monitor) { return monitor.primary; });
  std::vector<MonitorDescription> monitors;
  for (const X11Monitor& monitor : found) monitors.push_back({monitor.name, monitor.frame, {}});
  return monitors;
}

PixelRect firstWorkArea(X11Connection& connection) {
  const auto numbers = connection.numbers(connection.root(), X11Atom::netWorkarea, 4);
  const auto plausible = [](std::uint32_t value) { return value <= 65535; };
  if (numbers.size() != 4 || !std::all_of(numbers.begin(), numbers.end(), plausible)) return {};
  return {static_cast<int>(numbers[0]), static_cast<int>(numbers[1]), static_cast<int>(numbers[2]),
          static_cast<int>(numbers[3])};
}

}  // namespace

X11ScreenProvider::X11ScreenProvider(X11Connection& connection, const ScreenOverrides& overrides)
    : connection_(connection), overrides_(overrides), settling_(connection.timers(), [this] { changesSettled(); }) {
  events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handle(event); });
  refresh();
}

void X11ScreenProvider::setChangeHandler(std::function<void()> handler) {
  changed_ = std::make_shared<std::function<void()>>(std::move(handler));
}

std::shared_ptr<void> X11ScreenProvider::onRefresh(std::function<void()> handler) {
  auto subscriber = std::make_shared<std::function<void()>>(std::move(handler));
  std::erase_if(refreshSubscribers_, [](const auto& entry) { return entry.expired(); });
  refreshSubscribers_.push_back(subscriber);
  return subscriber;
}

void X11ScreenProvider::handle(const xcb_generic_event_t& event) {
  if (concerns(event)) settling_.note();
}

bool X11ScreenProvider::concerns(const xcb_generic_event_t& event) const {
  const std::uint8_t code = event.response_type & eventCodeMask;
  const auto& randr = connection_.randr();
  if (randr.present &&
      (code == randr.firstEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY || code == randr.firstEvent + XCB_RANDR_NOTIFY)) {
    return true;
  }
  switch (code) {
    case XCB_CONFIGURE_NOTIFY: {
      const auto window = reinterpret_cast<const xcb_configure_notify_event_t&>(event).window;
      return window == connection_.root() || std::count(watched_.begin(), watched_.end(), window) > 0;
    }
    case XCB_MAP_NOTIFY:
      return !connection_.isOwn(reinterpret_cast<const xcb_map_notify_event_t&>(event).window);
    case XCB_UNMAP_NOTIFY: {
      const auto window = reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window;
      return std::count(watched_.begin(), watched_.end(), window) > 0;
    }
    case XCB_DESTROY_NOTIFY: {
      const auto window = reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window;
      return std::count(watched_.begin(), watched_.end(), window) > 0;
    }
    case XCB_CLIENT_MESSAGE:  // a system tray begins its work
      return reinterpret_cast<const xcb_client_message_event_t&>(event).type == connection_.atom(X11Atom::manager);
    case XCB_PROPERTY_NOTIFY:
      return concernsProperty(reinterpret_cast<const xcb_property_notify_event_t&>(event));
    default:
      return false;
  }
}

bool X11ScreenProvider::concernsProperty(const xcb_property_notify_event_t& event) const {
  const auto is = [&](X11Atom which) { return event.atom == connection_.atom(which); };
  if (event.window == connection_.root()) {
    return event.atom == XCB_ATOM_RESOURCE_MANAGER || is(X11Atom::netWorkarea) || is(X11Atom::netClientList);
  }
  return is(X11Atom::netWmStrutPartial) || is(X11Atom::netWmStrut) || is(X11Atom::netWmWindowType);
}

void X11ScreenProvider::changesSettled() {
  const auto before = screens_;
  refresh();
  const auto handler = changed_;
  if (screens_ != before && *handler) (*handler)();
}

void X11ScreenProvider::refresh() {
  auto found = plausibleMonitors(monitors());
  const auto resources = connection_.requestProperty(connection_.root(), XCB_ATOM_RESOURCE_MANAGER, longestResources);
  const double scale = scaleFromResources(connection_.text(resources));
  if (connection_.isBroken()) return;  // what was last known stays
  subtractPanels(found);
  screens_ = describeScreens(found, scale, overrides_);
  frames_.clear();
  for (const MonitorDescription& monitor : found) frames_.push_back(monitor.frame);
  if (!found.empty()) space_ = spaceOf(found, scale);
  const auto subscribers = refreshSubscribers_;
  for (const auto& entry : subscribers) {
    if (const auto subscriber = entry.lock()) (*subscriber)();
  }
}

PixelRect X11ScreenProvider::clippedToScreen(const PixelRect& place) const {
  PixelRect best;
  const auto area = [](const PixelRect& rect) { return static_cast<std::int64_t>(rect.width) * rect.height; };
  for (const PixelRect& frame : frames_) {
    const PixelRect shared = intersection(place, frame);
    if (area(shared) > area(best)) best = shared;
  }
  return best;
}

std::vector<MonitorDescription> X11ScreenProvider::monitors() {
  if (connection_.randr().present) return randrMonitors(connection_);
  return {{"screen", connection_.rootRect(), {}}};
}

void X11ScreenProvider::subtractPanels(std::vector<MonitorDescription>& monitors) {
  const auto docks = findDocks(connection_);
  watchPanels(docks);
  const xcb_window_t withTray = panelWithTray(connection_, docks);
  std::vector<DockStrut> struts;
  for (const DockWindow& dock : docks) {
    if (dock.strut && dock.viewable) struts.push_back({dock.bounds, *dock.strut, dock.window == withTray});
  }
  root_ = connection_.rootRect();
  for (const MonitorDescription& monitor : monitors) {
    if (foreignPanel_ && intersects(*foreignPanel_, monitor.frame)) {
      struts.push_back(strutAlong(*foreignPanel_, monitor.frame, root_));
    }
  }
  for (MonitorDescription& monitor : monitors) {
    monitor.visible = visiblePixels(monitor.frame, root_, struts);
    monitor.panel = mainPanelEdge(monitor.frame, root_, struts);
  }
  // A work area is one rectangle for all monitors; without struts it is all there is, and the panel is on the first.
  if (struts.empty() && !monitors.empty()) {
    monitors.front().visible = visiblePixelsFromWorkArea(monitors.front().frame, firstWorkArea(connection_));
  }
}

void X11ScreenProvider::setForeignPanel(const std::optional<PixelRect>& place) {
  if (foreignPanel_ == place) return;
  foreignPanel_ = place;
  settling_.note();
}

void X11ScreenProvider::watchPanels(const std::vector<DockWindow>& docks) {
  std::vector<xcb_window_t> windows;
  for (const DockWindow& dock : docks) {
    windows.push_back(dock.window);
    if (std::count(watched_.begin(), watched_.end(), dock.window) > 0) continue;
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_.raw(), dock.window, XCB_CW_EVENT_MASK, &mask);
    settling_.note();  // what changed between reading it and watching it would be missed
  }
  watched_ = std::move(windows);
  connection_.flush();
}

PointerSource x11PointerSource(X11Connection& connection, const X11ScreenProvider& screens) {
  return {.location = [&connection, &screens]() -> std::optional<Point> {
            const auto answer =
                connection.reply(xcb_query_pointer_reply, xcb_query_pointer(connection.raw(), connection.root()));
            if (!answer || answer->same_screen == 0) return std::nullopt;
            return screens.space().toPoints(answer->root_x, answer->root_y);
          },
          .reason = {}};
}

}  // namespace veloria
