#include "platform/linux/x11/X11Stacking.h"

#include <algorithm>
#include <vector>

#include "platform/linux/x11/X11Docks.h"

namespace veloria {

namespace {

using Windows = std::vector<xcb_window_t>;

constexpr std::uint32_t mostWindows = 4096;
constexpr std::uint32_t mostTypes = 32;

bool holds(std::span<const xcb_window_t> windows, xcb_window_t window) {
  return std::find(windows.begin(), windows.end(), window) != windows.end();
}

struct StackedWindow {
  xcb_window_t window = XCB_WINDOW_NONE;
  bool visible = false;
  bool desktop = false;
};

struct Query {
  xcb_get_window_attributes_cookie_t attributes;
  xcb_get_property_cookie_t types;
};

// Bottom to top: the window manager's clients, or the children of the root without one.
Windows stackingOrder(X11Connection& connection, bool managed) {
  if (!managed) return topLevelWindows(connection);
  return connection.numbers(connection.root(), X11Atom::netClientListStacking, mostWindows);
}

std::vector<StackedWindow> describe(X11Connection& connection, const Windows& windows) {
  std::vector<Query> queries;
  for (const xcb_window_t window : windows) {
    queries.push_back({xcb_get_window_attributes(connection.raw(), window),
                       connection.requestProperty(window, connection.atom(X11Atom::netWmWindowType), mostTypes)});
  }
  std::vector<StackedWindow> stack;
  for (std::size_t i = 0; i < windows.size(); ++i) {
    const auto attributes = connection.reply(xcb_get_window_attributes_reply, queries[i].attributes);
    const auto types = connection.numbers(queries[i].types);
    const bool visible = attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
                         attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
    stack.push_back({windows[i], visible, holds(types, connection.atom(X11Atom::netWmWindowTypeDesktop))});
  }
  return stack;
}

// Directly above the topmost desktop window, or at the very bottom. A window manager keeps its layers by itself: there,
// to be on top of the own layer is enough.
std::optional<Restacking> onDesktop(X11Connection& connection, xcb_window_t window,
                                    std::span<const xcb_window_t> panels, bool managed) {
  bool below = true;
  bool coveredByDesktop = false;
  bool coversOthers = false;
  Restacking change{XCB_STACK_MODE_BELOW};
  for (const StackedWindow& each : describe(connection, stackingOrder(connection, managed))) {
    if (each.window == window) below = false;
    if (connection.isOwn(each.window) || !each.visible) continue;
    if (each.desktop)
      change = {XCB_STACK_MODE_ABOVE, managed ? static_cast<xcb_window_t>(XCB_WINDOW_NONE) : each.window};
    coveredByDesktop = coveredByDesktop || (each.desktop && !below);
    coversOthers = coversOthers || (!each.desktop && below && (!managed || holds(panels, each.window)));
  }
  return coveredByDesktop || coversOthers ? std::optional(change) : std::nullopt;
}

bool isBelowAny(const Windows& order, xcb_window_t window, std::span<const xcb_window_t> panels) {
  const auto own = std::find(order.begin(), order.end(), window);
  return std::any_of(own, order.end(), [&](xcb_window_t other) { return holds(panels, other); });
}

bool knowsAll(const Windows& order, xcb_window_t window, std::span<const xcb_window_t> panels) {
  return holds(order, window) &&
         std::all_of(panels.begin(), panels.end(), [&](xcb_window_t panel) { return holds(order, panel); });
}

// A panel that the window manager does not know has to be looked for in the tree.
bool isUnderPanel(X11Connection& connection, xcb_window_t window, std::span<const xcb_window_t> panels, bool managed) {
  const Windows order = stackingOrder(connection, managed);
  if (knowsAll(order, window, panels)) return isBelowAny(order, window, panels);
  Windows frames;
  for (const xcb_window_t panel : panels) frames.push_back(topLevelOf(connection, panel));
  return isBelowAny(topLevelWindows(connection), topLevelOf(connection, window), frames);
}

}  // namespace

std::optional<Restacking> neededRestacking(X11Connection& connection, xcb_window_t window, OverlayLevel level,
                                           std::span<const xcb_window_t> panels) {
  const bool managed = connection.windowManagerRunning();
  if (level == OverlayLevel::desktop) return onDesktop(connection, window, panels, managed);
  if (isUnderPanel(connection, window, panels, managed)) return Restacking{XCB_STACK_MODE_ABOVE};
  return std::nullopt;
}

void restack(X11Connection& connection, xcb_window_t window, const Restacking& change) {
  if (change.sibling == XCB_WINDOW_NONE) {
    const std::uint32_t mode = change.mode;
    xcb_configure_window(connection.raw(), window, XCB_CONFIG_WINDOW_STACK_MODE, &mode);
    return;
  }
  const std::uint32_t values[] = {change.sibling, change.mode};
  xcb_configure_window(connection.raw(), window, XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, values);
}

}  // namespace veloria
