#include "platform/linux/x11/X11Connection.h"

#include <xcb/composite.h>
#include <xcb/randr.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "base/Log.h"

namespace veloria {

namespace {

constexpr double soonSeconds = 0.001;
constexpr std::uint8_t sentEventBit = 0x80;

void ignoreBrokenPipes() {
  struct sigaction current {};
  if (sigaction(SIGPIPE, nullptr, &current) == 0 && current.sa_handler == SIG_DFL) std::signal(SIGPIPE, SIG_IGN);
}

template <typename List>
void dropExpired(List& list) {
  std::erase_if(list, [](const auto& entry) { return entry.expired(); });
}

// Handlers subscribe and end subscriptions while they run, so the walk is over a copy.
template <typename List, typename... Arguments>
void callAll(const List& list, const Arguments&... arguments) {
  const List current = list;  // NOLINT(performance-unnecessary-copy-initialization)
  for (const auto& entry : current) {
    if (const auto subscriber = entry.lock()) subscriber->handler(arguments...);
  }
}

struct FlagWhileAlive {
  explicit FlagWhileAlive(bool& flag) : flag_(flag) { flag_ = true; }
  ~FlagWhileAlive() { flag_ = false; }
  FlagWhileAlive(const FlagWhileAlive&) = delete;
  FlagWhileAlive& operator=(const FlagWhileAlive&) = delete;

 private:
  bool& flag_;
};

}  // namespace

struct X11Connection::EventSubscriber {
  EventHandler handler;
};

struct X11Connection::ChangeSubscriber {
  std::function<void()> handler;
};

X11Connection::X11Connection(const std::string& displayName, const DescriptorWatcher& watch, TimerFactory& timers)
    : X11Client(displayName), timers_(timers) {
  ignoreBrokenPipes();
  internAtoms();
  findExtensions();
  watchRoot();
  watchCompositor();
  if (isBroken()) throw std::runtime_error("The X display " + this->displayName() + " went away at once.");
  watch_ = watch(xcb_get_file_descriptor(raw()), [this] { readAll(); });
}

X11Connection::~X11Connection() = default;

void X11Connection::internAtoms() {
  std::array<xcb_intern_atom_cookie_t, x11AtomCount> cookies;
  for (std::size_t i = 0; i < x11AtomCount; ++i) {
    cookies[i] = xcb_intern_atom(raw(), 0, static_cast<std::uint16_t>(std::strlen(x11AtomNames[i])), x11AtomNames[i]);
  }
  const auto askForSelection = [&](const std::string& prefix) {
    const std::string name = prefix + std::to_string(screenNumber());
    return xcb_intern_atom(raw(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
  };
  const auto compositorCookie = askForSelection("_NET_WM_CM_S");
  const auto trayCookie = askForSelection("_NET_SYSTEM_TRAY_S");
  const auto atomFrom = [&](xcb_intern_atom_cookie_t cookie) {
    const auto answer = reply(xcb_intern_atom_reply, cookie);
    return answer ? answer->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
  };
  for (std::size_t i = 0; i < x11AtomCount; ++i) atoms_[i] = atomFrom(cookies[i]);
  compositorSelection_ = atomFrom(compositorCookie);
  traySelection_ = atomFrom(trayCookie);
}

// Servers fall back to an older behaviour when an extension is used before its version was asked for.
void X11Connection::findExtensions() {
  for (auto* id : {&xcb_randr_id, &xcb_shape_id, &xcb_composite_id, &xcb_xfixes_id}) {
    xcb_prefetch_extension_data(raw(), id);
  }
  randr_ = randrExtension();
  shape_ = extension(&xcb_shape_id);
  composite_ = extension(&xcb_composite_id);
  xfixes_ = extension(&xcb_xfixes_id);
  if (shape_.present)
    shape_.present = atLeast(reply(xcb_shape_query_version_reply, xcb_shape_query_version(raw())), 1, 1);
  if (composite_.present) {
    composite_.present =
        atLeast(reply(xcb_composite_query_version_reply, xcb_composite_query_version(raw(), 0, 4)), 0, 2);
  }
  if (xfixes_.present) {
    xfixes_.present = atLeast(reply(xcb_xfixes_query_version_reply, xcb_xfixes_query_version(raw(), 2, 0)), 1, 0);
  }
}

void X11Connection::watchRoot() {
  const std::uint32_t mask =
      XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(raw(), root(), XCB_CW_EVENT_MASK, &mask);
  if (randr_.present) {
    xcb_randr_select_input(
        raw(), root(),
        XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE | XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
  }
}

void X11Connection::watchCompositor() {
  if (compositorSelection_ == XCB_ATOM_NONE) return;
  if (xfixes_.present) {
    xcb_xfixes_select_selection_input(raw(), root(), compositorSelection_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
  }
  compositorRunning_ = ownerOf(compositorSelection_) != XCB_WINDOW_NONE;
}

xcb_window_t X11Connection::ownerOf(xcb_atom_t selection) {
  const auto answer = reply(xcb_get_selection_owner_reply, xcb_get_selection_owner(raw(), selection));
  return answer ? answer->owner : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

xcb_window_t X11Connection::trayManager() {
  return traySelection_ == XCB_ATOM_NONE ? static_cast<xcb_window_t>(XCB_WINDOW_NONE) : ownerOf(traySelection_);
}

bool X11Connection::isOwn(xcb_window_t window) const {
  const auto* setup = xcb_get_setup(raw());
  return (window & ~setup->resource_id_mask) == setup->resource_id_base;
}

bool X11Connection::windowManagerRunning() {
  const auto window = numbers(root(), X11Atom::netSupportingWmCheck, 1);
  if (window.empty()) return false;
  return numbers(window.front(), X11Atom::netSupportingWmCheck, 1) == window;
}

X11Connection::Subscription X11Connection::onEvent(EventHandler handler) {
  auto subscriber = std::make_shared<EventSubscriber>(EventSubscriber{std::move(handler)});
  dropExpired(eventSubscribers_);
  eventSubscribers_.push_back(subscriber);
  return subscriber;
}

X11Connection::Subscription X11Connection::onCompositorChange(std::function<void()> handler) {
  auto subscriber = std::make_shared<ChangeSubscriber>(ChangeSubscriber{std::move(handler)});
  dropExpired(compositorSubscribers_);
  compositorSubscribers_.push_back(subscriber);
  return subscriber;
}

void X11Connection::readAll() {
  while (auto* event = xcb_poll_for_event(raw())) queue_.emplace_back(event);
  dispatch();
}

void X11Connection::dispatchQueued() {
  while (auto* event = xcb_poll_for_queued_event(raw())) queue_.emplace_back(event);
  if (!queue_.empty() || isBroken()) dispatch();
}

// Waiting for a reply also reads the events before it, and the descriptor won't wake the loop for those again.
void X11Connection::replyRead() {
  while (auto* event = xcb_poll_for_queued_event(raw())) queue_.emplace_back(event);
  if (queue_.empty() || dispatching_ || soon_ || !watch_) return;
  soon_ = timers_.after(soonSeconds, [this] { readAll(); });
}

void X11Connection::dispatch() {
  if (dispatching_) return;
  {
    const FlagWhileAlive guard(dispatching_);
    while (!queue_.empty()) {
      const auto event = std::move(queue_.front());
      queue_.pop_front();
      deliver(*event);
    }
  }
  flush();
  if (isBroken()) reportBreak();
}

void X11Connection::deliver(const xcb_generic_event_t& event) {
  if (event.response_type == 0) {
    const auto& error = reinterpret_cast<const xcb_generic_error_t&>(event);
    NimbraLog::debugf("x11 error %u, request %u.%u, resource 0x%x", error.error_code, error.major_code,
                      error.minor_code, error.resource_id);
    return;
  }
  noteCompositor(event);
  callAll(eventSubscribers_, event);
}

void X11Connection::noteCompositor(const xcb_generic_event_t& event) {
  if (!xfixes_.present) return;
  if ((event.response_type & ~sentEventBit) != xfixes_.firstEvent + XCB_XFIXES_SELECTION_NOTIFY) return;
  const auto& change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
  if (change.selection == compositorSelection_) setCompositorRunning(change.owner != XCB_WINDOW_NONE);
}

void X11Connection::setCompositorRunning(bool running) {
  if (running == compositorRunning_) return;
  compositorRunning_ = running;
  callAll(compositorSubscribers_);
}

void X11Connection::reportBreak() {
  if (breakReported_) return;
  breakReported_ = true;
  watch_.reset();
  if (broken_)
    broken_(std::string("The connection to the X display was lost: ") +
            connectionErrorText(xcb_connection_has_error(raw())) + ".");
}

std::vector<std::uint32_t> X11Connection::numbers(xcb_window_t window, X11Atom property, std::uint32_t maximumWords) {
  return numbers(requestProperty(window, atom(property), maximumWords));
}

}  // namespace veloria
