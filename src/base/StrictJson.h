#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string_view>

#include "base/Result.h"

namespace veloria {

/// The maximum size of JSON from outside; more is refused unread.
inline constexpr std::size_t maximumJsonBytes = std::size_t{1} << 20;

/// The maximum nesting of arrays and objects.
inline constexpr int maximumJsonDepth = 64;

/// Parses one JSON value (RFC 8259); all JSON from outside is read with this. Refuses too many bytes, nesting that is
/// too deep, anything that is not JSON or not UTF-8, numbers that a double can't hold, and anything but white space
/// after the value. A byte order mark is allowed. If an object has a key twice, the last one counts. Time and memory
/// are linear in the number of bytes (times its logarithm for objects). The error is "line l, column c: reason", c
/// counted in bytes from 1, or just a reason. Any thread.
Result<nlohmann::json> parseStrictJson(std::string_view bytes);

}  // namespace veloria
