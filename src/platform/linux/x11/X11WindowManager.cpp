#include "platform/linux/x11/X11WindowManager.h"

#include <unistd.h>
#include <xcb/shape.h>
#include <xcb/xcb_icccm.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string_view>
#include <vector>

#include "platform/linux/x11/X11Docks.h"

namespace veloria {

namespace {

constexpr std::string_view title = "Veloria";
constexpr std::string_view instanceAndClass{"Veloria\0Veloria\0", 16};
constexpr std::uint32_t allDesktops = 0xFFFFFFFFU;
constexpr std::uint32_t addState = 1;
constexpr std::uint32_t fromApplication = 1;
constexpr std::uint32_t mostStates = 64;
constexpr std::uint32_t motifHasDecorations = 1U << 1;

void setNumbers(X11Connection& connection, xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                std::span<const std::uint32_t> values) {
  xcb_change_property(connection.raw(), XCB_PROP_MODE_REPLACE, window, property, type, 32,
                      static_cast<std::uint32_t>(values.size()), values.data());
}

void setText(X11Connection& connection, xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
             std::string_view text) {
  xcb_change_property(connection.raw(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
                      static_cast<std::uint32_t>(text.size()), text.data());
}

void writeIdentity(X11Connection& connection, xcb_window_t window) {
  setText(connection, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, title);
  setText(connection, window, connection.atom(X11Atom::netWmName), connection.atom(X11Atom::utf8String), title);
  setText(connection, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, instanceAndClass);
  const std::uint32_t process[] = {static_cast<std::uint32_t>(getpid())};
  setNumbers(connection, window, connection.atom(X11Atom::netWmPid), XCB_ATOM_CARDINAL, process);
}

// Without WM_DELETE_WINDOW a window manager that is asked to close the window would end our connection; the message
// itself is ignored. There is no WM_TAKE_FOCUS.
void refuseFocus(X11Connection& connection, xcb_window_t window) {
  xcb_icccm_wm_hints_t hints{};
  xcb_icccm_wm_hints_set_input(&hints, 0);
  xcb_icccm_wm_hints_set_normal(&hints);
  xcb_icccm_set_wm_hints(connection.raw(), window, &hints);
  const std::uint32_t protocols[] = {connection.atom(X11Atom::wmDeleteWindow)};
  setNumbers(connection, window, connection.atom(X11Atom::wmProtocols), XCB_ATOM_ATOM, protocols);
  writeUserTime(connection, window, 0);  // never: it takes no focus when it is mapped
}

std::array<std::uint32_t, 4> statesFor(const X11Connection& connection, OverlayLevel level) {
  const bool above = level == OverlayLevel::aboveMenuBar;
  return {connection.atom(X11Atom::netWmStateSkipTaskbar), connection.atom(X11Atom::netWmStateSkipPager),
          connection.atom(X11Atom::netWmStateSticky),
          connection.atom(above ? X11Atom::netWmStateAbove : X11Atom::netWmStateBelow)};
}

void writeLevel(X11Connection& connection, xcb_window_t window, OverlayLevel level) {
  const bool above = level == OverlayLevel::aboveMenuBar;
  // Window managers push windows of other types out from under panels (utility), or put them over panels (dock, below).
  const std::uint32_t type[] = {
      connection.atom(above ? X11Atom::netWmWindowTypeDock : X11Atom::netWmWindowTypeDesktop)};
  setNumbers(connection, window, connection.atom(X11Atom::netWmWindowType), XCB_ATOM_ATOM, type);
  setNumbers(connection, window, connection.atom(X11Atom::netWmState), XCB_ATOM_ATOM, statesFor(connection, level));
  const std::uint32_t desktop[] = {allDesktops};
  setNumbers(connection, window, connection.atom(X11Atom::netWmDesktop), XCB_ATOM_CARDINAL, desktop);
}

void refuseDecorations(X11Connection& connection, xcb_window_t window) {
  const std::uint32_t hints[] = {motifHasDecorations, 0, 0, 0, 0};
  const xcb_atom_t atom = connection.atom(X11Atom::motifWmHints);
  setNumbers(connection, window, atom, atom, hints);
}

// xcb sends the 32 bytes of an event, whatever the size of its structure.
template <typename Event>
void sendToRoot(X11Connection& connection, const Event& event) {
  std::array<char, 32> bytes{};
  static_assert(sizeof(Event) <= bytes.size());
  std::memcpy(bytes.data(), &event, sizeof event);
  xcb_send_event(connection.raw(), 0, connection.root(),
                 XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, bytes.data());
}

void sendToWindowManager(X11Connection& connection, xcb_window_t window, X11Atom type,
                         const std::array<std::uint32_t, 5>& data) {
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = window;
  message.type = connection.atom(type);
  std::copy(data.begin(), data.end(), message.data.data32);
  sendToRoot(connection, message);
}

}  // namespace

void writeWindowHints(X11Connection& connection, xcb_window_t window, OverlayLevel level, const PixelRect& place) {
  writeIdentity(connection, window);
  refuseFocus(connection, window);
  refuseDecorations(connection, window);
  writeLevel(connection, window, level);
  writePlaceHints(connection, window, place);
}

void writePlaceHints(X11Connection& connection, xcb_window_t window, const PixelRect& place) {
  xcb_size_hints_t hints{};
  xcb_icccm_size_hints_set_position(&hints, 1, place.x, place.y);
  xcb_icccm_size_hints_set_size(&hints, 1, place.width, place.height);
  xcb_icccm_size_hints_set_min_size(&hints, place.width, place.height);
  xcb_icccm_size_hints_set_max_size(&hints, place.width, place.height);
  xcb_icccm_size_hints_set_win_gravity(&hints, XCB_GRAVITY_STATIC);
  xcb_icccm_set_wm_normal_hints(connection.raw(), window, &hints);
}

bool reassertStates(X11Connection& connection, xcb_window_t window, OverlayLevel level) {
  const auto present = connection.numbers(window, X11Atom::netWmState, mostStates);
  bool missing = false;
  for (const std::uint32_t state : statesFor(connection, level)) {
    if (state == connection.atom(X11Atom::netWmStateSticky))
      continue;  // not every one keeps it; the desktop says it too
    if (std::find(present.begin(), present.end(), state) != present.end()) continue;
    missing = true;
    sendToWindowManager(connection, window, X11Atom::netWmState, {addState, state, 0, fromApplication, 0});
  }
  const auto desktop = connection.numbers(window, X11Atom::netWmDesktop, 1);
  if (desktop.empty() || desktop.front() == allDesktops) return missing;
  sendToWindowManager(connection, window, X11Atom::netWmDesktop, {allDesktops, fromApplication, 0, 0, 0});
  return true;
}

void announceWithdrawal(X11Connection& connection, xcb_window_t window) {
  xcb_unmap_notify_event_t event{};
  event.response_type = XCB_UNMAP_NOTIFY;
  event.event = connection.root();
  event.window = window;
  sendToRoot(connection, event);
}

void makeClickThrough(X11Connection& connection, xcb_window_t window) {
  xcb_shape_rectangles(connection.raw(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_YX_BANDED, window, 0,
                       0, 0, nullptr);
}

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

void writeUserTime(X11Connection& connection, xcb_window_t window, xcb_timestamp_t time) {
  const std::uint32_t times[] = {time};
  setNumbers(connection, window, connection.atom(X11Atom::netWmUserTime), XCB_ATOM_CARDINAL, times);
}

void requestUserTimeReport(X11Connection& connection, xcb_window_t window) {
  xcb_change_property(connection.raw(), XCB_PROP_MODE_APPEND, window, connection.atom(X11Atom::netWmUserTime),
                      XCB_ATOM_CARDINAL, 32, 0, nullptr);
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
