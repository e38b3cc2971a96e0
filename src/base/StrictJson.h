#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string_view>

#include "base/Result.h"

namespace veloria {

/// The most bytes that JSON from outside may have; more is refused unread.
inline constexpr std::size_t maximumJsonBytes = std::size_t{1} << 20;

/// The most arrays and objects that may stand in each other.
inline constexpr int maximumJsonDepth = 64;

/// Reads one JSON value (RFC 8259) from bytes of any origin; the only way in which JSON from outside is read. Refused:
/// too many bytes, nesting that is too deep, anything that is not JSON, bytes that are not UTF-8, numbers that a
/// double can't hold, anything but white space after the value. A byte order mark is allowed. Where an object has a
/// key twice, the last one counts. Time and memory are linear in the number of bytes (times its logarithm for objects).
/// The error is "line l, column c: reason", c counted in bytes from 1, or just a reason. Any thread.
Result<nlohmann::json> parseStrictJson(std::string_view bytes);

}  // namespace veloria
