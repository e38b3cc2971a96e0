#pragma once

#include <optional>
#include <string>

namespace veloria::cli {

/// The session that a write goes to.
struct SessionChoice {
  std::string name = "default";
  std::optional<double> ttl;  ///< seconds until it lapses; above 0; nothing: it stays
};

}  // namespace veloria::cli
