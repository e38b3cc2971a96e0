#pragma once

#include <string>

namespace veloria {

/// What is known about the display servers before one is chosen.
struct DesktopFacts {
  bool waylandNamed = false;    ///< WAYLAND_DISPLAY is set
  bool waylandAnswers = false;  ///< it could be connected to
  std::string waylandProblem;   ///< why not
  bool layerShell = false;      ///< the compositor has the layer shell
  bool x11Named = false;        ///< DISPLAY is set
};

enum class DesktopKind { wayland, x11, none };

struct DesktopChoice {
  DesktopKind kind = DesktopKind::none;
  std::string problem;  ///< for a person, when there is none
  bool operator==(const DesktopChoice&) const = default;
};

/// Wayland where overlays can be had there, else X11 (which most Wayland desktops offer too), else none.
DesktopChoice chooseDesktop(const DesktopFacts& facts);

}  // namespace veloria
