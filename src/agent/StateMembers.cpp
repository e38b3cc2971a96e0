#include "agent/StateMembers.h"

#include <cmath>

namespace veloria {

std::optional<double> channelValue(const nlohmann::json& member) {
  if (member.is_boolean()) return member.get<bool>() ? 1 : 0;
  if (member.is_number() && std::isfinite(member.get<double>())) return member.get<double>();
  return std::nullopt;
}

}  // namespace veloria
