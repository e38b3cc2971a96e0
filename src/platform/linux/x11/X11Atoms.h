#pragma once

#include <cstddef>

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

}  // namespace veloria
