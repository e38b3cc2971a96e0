#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/screens/ScreenSpace.h"
#include "platform/linux/x11/X11Atoms.h"
#include "ports/DescriptorWatcher.h"
#include "ports/Timer.h"

namespace veloria {

/// Something xcb allocated.
struct XcbFree {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using XcbPtr = std::unique_ptr<T, XcbFree>;

/// An extension's event numbers; `firstEvent` is 0 when the server lacks it.
struct X11Extension {
  bool present = false;
  std::uint8_t firstEvent = 0;
};

/// One connection to an X server, watched by the event loop. Errors that the server sends (a window that vanished
/// meanwhile, for instance) are dropped; a connection that breaks is reported once, and from then on every request
/// does nothing and every reply is null. Main thread.
///
/// Root events (structure, substructure, properties, RandR, the compositor's selection) are selected here once for all,
/// since one client has only one event mask on a window.
class X11Connection {
 public:
  using EventHandler = std::function<void(const xcb_generic_event_t&)>;
  /// Ends the subscription when it is let go, which a handler may do.
  using Subscription = std::shared_ptr<void>;

  /// Connects to `displayName` ($DISPLAY when empty). Throws std::runtime_error with a sentence for a person. SIGPIPE
  /// is set to be ignored in this process when nobody has chosen otherwise: a server that goes away would end it
  /// unheard.
  X11Connection(const std::string& displayName, const DescriptorWatcher& watch, TimerFactory& timers);
  ~X11Connection();
  X11Connection(const X11Connection&) = delete;
  X11Connection& operator=(const X11Connection&) = delete;

  xcb_connection_t* raw() const { return connection_.get(); }
  const xcb_screen_t& screen() const { return *screen_; }
  xcb_window_t root() const { return screen_->root; }
  xcb_atom_t atom(X11Atom which) const { return atoms_[static_cast<std::size_t>(which)]; }
  const X11Extension& randr() const { return randr_; }          ///< present from version 1.5 on
  const X11Extension& shape() const { return shape_; }          ///< present from version 1.1 on
  const X11Extension& composite() const { return composite_; }  ///< present from version 0.2 on
  TimerFactory& timers() const { return timers_; }

  /// True when `window` was made on this connection.
  bool isOwn(xcb_window_t window) const;
  bool compositorRunning() const { return compositorRunning_; }
  /// Asks the server; one round trip or two.
  bool windowManagerRunning();

  /// `handler` gets every event that is not an error.
  [[nodiscard]] Subscription onEvent(EventHandler handler);
  /// Called after a compositor has come or gone.
  [[nodiscard]] Subscription onCompositorChange(std::function<void()> handler);
  /// Called once with a sentence for a person; it must not destroy this object.
  void setBrokenHandler(std::function<void(const std::string&)> handler) { broken_ = std::move(handler); }
  bool isBroken() const { return xcb_connection_has_error(connection_.get()) != 0; }

  void flush() { xcb_flush(connection_.get()); }

  /// Handles what other users of raw() have read off the wire while they waited for replies. Costs nothing when there
  /// is nothing; never reads.
  void dispatchQueued();

  /// The reply to a request, or null when the server refused it or is gone. Waits for it.
  template <typename Reply, typename Cookie>
  XcbPtr<Reply> reply(Reply* (*fetch)(xcb_connection_t*, Cookie, xcb_generic_error_t**), Cookie cookie) {
    xcb_generic_error_t* error = nullptr;
    XcbPtr<Reply> result(fetch(connection_.get(), cookie, &error));
    std::free(error);
    queuedWhileWaiting();
    return result;
  }

  xcb_get_property_cookie_t requestProperty(xcb_window_t window, xcb_atom_t property, std::uint32_t maximumWords) const;
  /// The 32-bit items of a requested property; empty for a missing one and for any other format.
  std::vector<std::uint32_t> numbers(xcb_get_property_cookie_t cookie);
  /// The bytes of a requested property of 8-bit items.
  std::string text(xcb_get_property_cookie_t cookie);
  std::vector<std::uint32_t> numbers(xcb_window_t window, X11Atom property, std::uint32_t maximumWords);

  /// Where the root window is: at (0, 0), with the size it has now.
  PixelRect rootRect();

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
  };
  struct EventSubscriber;
  struct ChangeSubscriber;

  void internAtoms();
  void findExtensions();
  void watchRoot();
  void watchCompositor();
  void readAll();
  void dispatch();
  void deliver(const xcb_generic_event_t& event);
  void noteCompositor(const xcb_generic_event_t& event);
  void setCompositorRunning(bool running);
  void queuedWhileWaiting();
  void reportBreak();

  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  xcb_screen_t* screen_ = nullptr;
  int screenNumber_ = 0;
  TimerFactory& timers_;
  std::array<xcb_atom_t, x11AtomCount> atoms_{};
  xcb_atom_t compositorSelection_ = XCB_ATOM_NONE;
  X11Extension randr_;
  X11Extension shape_;
  X11Extension composite_;
  X11Extension xfixes_;
  bool compositorRunning_ = false;
  std::deque<XcbPtr<xcb_generic_event_t>> queue_;
  std::vector<std::weak_ptr<EventSubscriber>> eventSubscribers_;
  std::vector<std::weak_ptr<ChangeSubscriber>> compositorSubscribers_;
  std::function<void(const std::string&)> broken_;
  bool breakReported_ = false;
  bool dispatching_ = false;
  std::unique_ptr<Timer> soon_;
  std::shared_ptr<void> watch_;
};

}  // namespace veloria
