#include "main/linux/LinuxDesktop.h"

#include <optional>
#include <stdexcept>

#include "base/Log.h"
#include "main/commands/Command.h"
#include "main/linux/DesktopChoice.h"
#include "main/linux/WaylandDesktop.h"
#include "main/linux/X11Desktop.h"

namespace veloria {

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
      return makeX11Desktop(*environment("DISPLAY"), watch, timers);
    case DesktopKind::none:
      break;
  }
  throw WorkError(choice.problem);
}

}  // namespace veloria
