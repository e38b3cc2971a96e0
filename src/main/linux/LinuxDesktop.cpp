#include "main/linux/LinuxDesktop.h"

#include <optional>
#include <stdexcept>

#include "base/Log.h"
#include "main/commands/Command.h"
#include "platform/linux/files/DesktopNames.h"

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
  return {
      DesktopKind::none,
      "there is no display here (neither WAYLAND_DISPLAY nor DISPLAY is set). To draw without one, see 'veloria render "
      "--help'."};
}

namespace {

bool isSet(const Environment& environment, const char* variable) {
  const auto value = environment(variable);
  return value && !value->empty();
}

}  // namespace

std::unique_ptr<Desktop> openDesktop(const Environment& environment, const DescriptorWatcher& watch,
                                     TimerFactory& timers) {
  DesktopFacts facts;
  facts.x11Named = isSet(environment, "DISPLAY");
  facts.waylandNamed = isSet(environment, "WAYLAND_DISPLAY");
  std::unique_ptr<WaylandConnection> wayland;
  if (facts.waylandNamed) {
    try {
      wayland = std::make_unique<WaylandConnection>(*environment("WAYLAND_DISPLAY"), watch, timers);
      facts.waylandAnswers = true;
      facts.layerShell = wayland->layerShell() != nullptr;
    } catch (const std::runtime_error& error) {
      facts.waylandProblem = error.what();
      NimbraLog::debug(error.what());
    }
  }
  const DesktopChoice choice = chooseDesktop(facts);
  switch (choice.kind) {
    case DesktopKind::wayland:
      return makeWaylandDesktop(std::move(wayland), environment);
    case DesktopKind::x11:
      return makeX11Desktop(*environment("DISPLAY"), facts.waylandAnswers && isDesktop(environment, "gnome"), watch,
                            timers);
    case DesktopKind::none:
      break;
  }
  throw WorkError(choice.problem);
}

}  // namespace veloria
