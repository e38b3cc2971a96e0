#include "platform/macos/shell/StatusClick.h"

namespace veloria {

namespace {

constexpr std::uint64_t rightMouseUp = 4;
constexpr std::uint64_t controlKey = 1U << 18;

}  // namespace

StatusClick statusClick(const std::optional<CurrentEvent>& event) {
  if (!event) return {};
  return {event->type == rightMouseUp ? Click::secondary : Click::primary, (event->modifiers & controlKey) != 0};
}

}  // namespace veloria
