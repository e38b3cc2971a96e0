#include "main/linux/DesktopChoice.h"

namespace veloria {

DesktopChoice chooseDesktop(const DesktopFacts& facts) {
  if (facts.waylandAnswers && facts.layerShell) return {DesktopKind::wayland, {}};
  if (facts.x11Named) return {DesktopKind::x11, {}};
  if (facts.waylandAnswers) {
    return {DesktopKind::none,
            "this Wayland desktop has no layer shell (wlr-layer-shell; GNOME has none), without which nothing can be "
            "painted under or over its panel, and it offers no X11 display instead (DISPLAY is not set)."};
  }
  if (facts.waylandNamed) return {DesktopKind::none, facts.waylandProblem};
  return {DesktopKind::none,
          "there is no display here (neither WAYLAND_DISPLAY nor DISPLAY is set). 'veloria render --help' tells how to "
          "draw without one."};
}

}  // namespace veloria
