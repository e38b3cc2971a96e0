#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/x11/X11Client.h"
#include "ports/EventLoop.h"

namespace veloria {

/// The atoms in use: one line each, the enumerator and the atom's name.
#define VELORIA_X11_ATOMS(X)                               \
  X(manager, "MANAGER")                                    \
  X(motifWmHints, "_MOTIF_WM_HINTS")                       \
  X(netClientList, "_NET_CLIENT_LIST")                     \
  X(netClientListStacking, "_NET_CLIENT_LIST_STACKING")    \
  X(netCurrentDesktop, "_NET_CURRENT_DESKTOP")             \
  X(netDesktopViewport, "_NET_DESKTOP_VIEWPORT")           \
  X(netSupportingWmCheck, "_NET_SUPPORTING_WM_CHECK")      \
  X(netWmDesktop, "_NET_WM_DESKTOP")                       \
  X(netWmName, "_NET_WM_NAME")                             \
  X(netWmPid, "_NET_WM_PID")                               \
  X(netWmState, "_NET_WM_STATE")                           \
  X(netWmStateAbove, "_NET_WM_STATE_ABOVE")                \
  X(netWmStateBelow, "_NET_WM_STATE_BELOW")                \
  X(netWmStateFullscreen, "_NET_WM_STATE_FULLSCREEN")      \
  X(netWmStateHidden, "_NET_WM_STATE_HIDDEN")              \
  X(netWmStateSkipPager, "_NET_WM_STATE_SKIP_PAGER")       \
  X(netWmStateSkipTaskbar, "_NET_WM_STATE_SKIP_TASKBAR")   \
  X(netWmStateSticky, "_NET_WM_STATE_STICKY")              \
  X(netWmStrut, "_NET_WM_STRUT")                           \
  X(netWmStrutPartial, "_NET_WM_STRUT_PARTIAL")            \
  X(netWmUserTime, "_NET_WM_USER_TIME")                    \
  X(netWmWindowOpacity, "_NET_WM_WINDOW_OPACITY")          \
  X(netWmWindowType, "_NET_WM_WINDOW_TYPE")                \
  X(netWmWindowTypeDesktop, "_NET_WM_WINDOW_TYPE_DESKTOP") \
  X(netWmWindowTypeDock, "_NET_WM_WINDOW_TYPE_DOCK")       \
  X(netWorkarea, "_NET_WORKAREA")                          \
  X(utf8String, "UTF8_STRING")                             \
  X(wmDeleteWindow, "WM_DELETE_WINDOW")                    \
  X(wmProtocols, "WM_PROTOCOLS")                           \
  X(wmState, "WM_STATE")

enum class X11Atom : std::size_t {
#define VELORIA_X11_ENUMERATOR(name, text) name,
  VELORIA_X11_ATOMS(VELORIA_X11_ENUMERATOR)
#undef VELORIA_X11_ENUMERATOR
};

/// Their names, in the order of X11Atom.
inline constexpr const char* x11AtomNames[] = {
#define VELORIA_X11_NAME(name, text) text,
    VELORIA_X11_ATOMS(VELORIA_X11_NAME)
#undef VELORIA_X11_NAME
};

inline constexpr std::size_t x11AtomCount = sizeof(x11AtomNames) / sizeof(x11AtomNames[0]);

/// A connection to an X server that the event loop watches. Errors that the server sends (a window that vanished
/// in the meantime, for example) are dropped; a connection that breaks is reported once, and from then on every request
/// does nothing and every reply is null. Main thread.
///
/// Root events (structure, substructure, properties, RandR, the compositor's selection) are selected here once for all,
/// since one client has only one event mask on a window.
class X11Connection final : public X11Client {
 public:
  using EventHandler = std::function<void(const xcb_generic_event_t&)>;
  /// Ends the subscription when it is destroyed, which a handler may do.
  using Subscription = std::shared_ptr<void>;

  /// Connects to `displayName` ($DISPLAY when empty). Throws std::runtime_error with a sentence for a person. SIGPIPE
  /// is ignored from now on unless the process has a handler for it: a server that goes away would end the process
  /// without a message.
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
  /// The window that manages the status icons of the system tray; none without a tray. One round trip.
  xcb_window_t trayManager();
  /// One or two round trips.
  bool windowManagerRunning();

  /// `handler` gets every event that is not an error.
  [[nodiscard]] Subscription onEvent(EventHandler handler);
  /// Called after a compositor has come or gone.
  [[nodiscard]] Subscription onCompositorChange(std::function<void()> handler);
  /// Called once with a sentence for a person; it must not destroy this object.
  void setBrokenHandler(std::function<void(const std::string&)> handler) { broken_ = std::move(handler); }

  void flush() { xcb_flush(raw()); }

  /// Handles the events that other users of raw() have read while they waited for replies. Costs nothing without any;
  /// never reads.
  void dispatchQueued();

  using X11Client::numbers;
  std::vector<std::uint32_t> numbers(xcb_window_t window, X11Atom property, std::uint32_t maximumWords);

 private:
  struct EventSubscriber;
  struct ChangeSubscriber;

  void internAtoms();
  xcb_window_t ownerOf(xcb_atom_t selection);
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
  xcb_atom_t traySelection_ = XCB_ATOM_NONE;
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
