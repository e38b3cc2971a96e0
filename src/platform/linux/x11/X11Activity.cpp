#include "platform/linux/x11/X11Activity.h"

#include <xcb/dpms.h>

#include <algorithm>
#include <utility>

#include "platform/linux/x11/X11Docks.h"

namespace veloria {

namespace {

constexpr std::uint32_t onAllDesktops = 0xFFFFFFFF;

std::int64_t area(const PixelRect& rect) {
  return rect.empty() ? 0 : static_cast<std::int64_t>(rect.width) * rect.height;
}

bool isShown(const std::optional<std::uint32_t>& desktop, const DesktopsShown& desktops) {
  return desktops.perMonitor || !desktop || !desktops.current || *desktop == onAllDesktops ||
         *desktop == *desktops.current;
}

}  // namespace

DesktopsShown desktopsShown(std::span<const std::uint32_t> current, std::span<const std::uint32_t> viewports) {
  return {current.size() == 1 ? std::optional(current.front()) : std::nullopt,
          std::any_of(viewports.begin(), viewports.end(), [](std::uint32_t value) { return value != 0; })};
}

bool coversScreen(const FullScreenWindow& window, const DesktopsShown& desktops, const PixelRect& screen) {
  if (!window.viewable || window.hidden || window.desktop || !isShown(window.onDesktop, desktops)) return false;
  return 2 * area(intersection(window.bounds, screen)) > area(screen);
}

namespace {

constexpr std::uint32_t mostWindows = 4096;
constexpr std::uint32_t mostStates = 32;
constexpr std::uint32_t mostDesktops = 256;

bool holds(const std::vector<std::uint32_t>& numbers, xcb_atom_t atom) {
  return std::find(numbers.begin(), numbers.end(), atom) != numbers.end();
}

struct Query {
  xcb_get_window_attributes_cookie_t attributes;
  xcb_get_geometry_cookie_t geometry;
  xcb_translate_coordinates_cookie_t position;
  xcb_get_property_cookie_t states;
  xcb_get_property_cookie_t types;
  xcb_get_property_cookie_t desktop;
};

Query ask(X11Connection& connection, xcb_window_t window) {
  auto* raw = connection.raw();
  return {xcb_get_window_attributes(raw, window),
          xcb_get_geometry(raw, window),
          xcb_translate_coordinates(raw, window, connection.root(), 0, 0),
          connection.requestProperty(window, connection.atom(X11Atom::netWmState), mostStates),
          connection.requestProperty(window, connection.atom(X11Atom::netWmWindowType), mostStates),
          connection.requestProperty(window, connection.atom(X11Atom::netWmDesktop), 1)};
}

FullScreenWindow collect(X11Connection& connection, const Query& query) {
  const auto attributes = connection.reply(xcb_get_window_attributes_reply, query.attributes);
  const auto geometry = connection.reply(xcb_get_geometry_reply, query.geometry);
  const auto position = connection.reply(xcb_translate_coordinates_reply, query.position);
  const auto states = connection.numbers(query.states);
  const auto types = connection.numbers(query.types);
  const auto desktop = connection.numbers(query.desktop);
  if (!attributes || !geometry || !position) return {};
  FullScreenWindow window;
  window.viewable =
      attributes->map_state == XCB_MAP_STATE_VIEWABLE && attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
  window.hidden = holds(states, connection.atom(X11Atom::netWmStateHidden));
  window.desktop = holds(types, connection.atom(X11Atom::netWmWindowTypeDesktop));
  if (!desktop.empty()) window.onDesktop = desktop.front();
  window.bounds = {position->dst_x, position->dst_y, geometry->width, geometry->height};
  return window;
}

}  // namespace

X11FullScreen::X11FullScreen(X11Connection& connection, X11ScreenProvider& screens)
    : connection_(connection), screens_(screens) {}

bool X11FullScreen::isActive() {
  if (connection_.isBroken()) return false;
  const auto all = screens_.screens();
  if (all.empty()) return false;
  const auto windows = fullScreenWindows();
  if (windows.empty()) return false;
  const auto root = connection_.root();
  const auto current = connection_.requestProperty(root, connection_.atom(X11Atom::netCurrentDesktop), 1);
  const auto viewports =
      connection_.requestProperty(root, connection_.atom(X11Atom::netDesktopViewport), 2 * mostDesktops);
  const auto described = describe(windows);
  const DesktopsShown desktops = desktopsShown(connection_.numbers(current), connection_.numbers(viewports));
  const PixelRect screen = screens_.space().toPixels(all.front().frame, all.front().backingScale);
  return std::any_of(described.begin(), described.end(),
                     [&](const FullScreenWindow& window) { return coversScreen(window, desktops, screen); });
}

std::vector<xcb_window_t> X11FullScreen::fullScreenWindows() {
  auto windows = connection_.numbers(connection_.root(), X11Atom::netClientList, mostWindows);
  if (windows.empty()) windows = topLevelWindows(connection_);
  std::vector<xcb_get_property_cookie_t> states;
  for (const xcb_window_t window : windows) {
    states.push_back(connection_.requestProperty(window, connection_.atom(X11Atom::netWmState), mostStates));
  }
  std::vector<xcb_window_t> result;
  for (std::size_t i = 0; i < windows.size(); ++i) {
    const auto atoms = connection_.numbers(states[i]);
    if (connection_.isOwn(windows[i])) continue;
    if (holds(atoms, connection_.atom(X11Atom::netWmStateFullscreen))) result.push_back(windows[i]);
  }
  return result;
}

std::vector<FullScreenWindow> X11FullScreen::describe(const std::vector<xcb_window_t>& windows) {
  std::vector<Query> queries;
  for (const xcb_window_t window : windows) queries.push_back(ask(connection_, window));
  std::vector<FullScreenWindow> result;
  for (const Query& query : queries) result.push_back(collect(connection_, query));
  return result;
}

X11Dpms::X11Dpms(X11Connection& connection) : connection_(connection) {
  const auto* extension = xcb_get_extension_data(connection_.raw(), &xcb_dpms_id);
  if (extension == nullptr || extension->present == 0) return;
  const auto capable = connection_.reply(xcb_dpms_capable_reply, xcb_dpms_capable(connection_.raw()));
  available_ = capable && capable->capable != 0;
}

void X11Dpms::poll() {
  if (!available_) return;
  const bool off = areOff();
  if (std::exchange(off_, off) != off && handler_) handler_(off);
}

bool X11Dpms::areOff() {
  const auto info = connection_.reply(xcb_dpms_info_reply, xcb_dpms_info(connection_.raw()));
  return info && displaysAreOff(info->state != 0, info->power_level);
}

}  // namespace veloria
