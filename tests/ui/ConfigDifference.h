#pragma once

#include <string>
#include <vector>

#include "settings/NimbraConfig.h"

namespace veloria {

/// The keys of the fields in which two records differ.
inline std::vector<std::string> differingKeys(const NimbraConfig& a, const NimbraConfig& b) {
  std::vector<std::string> keys;
#define VELORIA_FIELD(type, name, initial, group) \
  if (!(a.name == b.name)) keys.emplace_back(#name);
#include "settings/NimbraConfigFields.h"
  return keys;
}

}  // namespace veloria
