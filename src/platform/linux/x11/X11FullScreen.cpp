#include "platform/linux/x11/X11FullScreen.h"

#include <algorithm>

#include "platform/linux/x11/X11Docks.h"

namespace veloria {

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

}  // namespace veloria
