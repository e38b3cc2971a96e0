#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/x11/X11Atoms.h"
#include "platform/linux/x11/X11Client.h"
#include "ports/DescriptorWatcher.h"
#include "ports/Timer.h"

namespace veloria {

/// A connection to an X server that the event loop watches. Errors that the server sends (a window that vanished
/// meanwhile, for instance) are dropped; a connection that breaks is reported once, and from then on every request
/// does nothing and every reply is null. Main thread.
///
/// Root events (structure, substructure, properties, RandR, the compositor's selection) are selected here once for all,
/// since one client has only one event mask on a window.
class X11Connection final : public X11Client {
 public:
  using EventHandler = std::function<void(const xcb_generic_event_t&)>;
  /// Ends the subscription when it is let go, which a handler may do.
  using Subscription = std::shared_ptr<void>;

  /// Connects to `displayName` ($DISPLAY when empty). Throws std::runtime_error with a sentence for a person. SIGPIPE
  /// is set to be ignored in this process when nobody has chosen otherwise: a server that goes away would end it
  /// unheard.
  X11Connection(const std::string& displayName, const DescriptorWatcher& watch, TimerFactory& timers);
  ~X11Connection() override;

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

  void flush() { xcb_flush(raw()); }

  /// Handles what other users of raw() have read off the wire while they waited for replies. Costs nothing when there
  /// is nothing; never reads.
  void dispatchQueued();

  using X11Client::numbers;
  std::vector<std::uint32_t> numbers(xcb_window_t window, X11Atom property, std::uint32_t maximumWords);

 private:
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
  void replyRead() override;
  void reportBreak();

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
  OneShot soon_;
  std::shared_ptr<void> watch_;
};

}  // namespace veloria
