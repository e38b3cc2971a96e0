#pragma once

#include <cstdint>
#include <optional>

#include "ports/Menu.h"

namespace veloria {

/// The event that the application is handling: the system's numbers for its type and modifier flags.
struct CurrentEvent {
  std::uint64_t type = 0;
  std::uint64_t modifiers = 0;
};

struct StatusClick {
  Click click = Click::unknown;
  bool controlHeld = false;
  bool operator==(const StatusClick&) const = default;
};

/// How the status item was clicked; unknown without an event.
StatusClick statusClick(const std::optional<CurrentEvent>& event);

}  // namespace veloria
