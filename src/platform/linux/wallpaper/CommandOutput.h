#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace veloria {

/// Runs a short program (no shell; `argv[0]` is looked up on the PATH), with nothing to read and its errors thrown
/// away, and returns what it wrote. Nothing when there is no such program, it fails, writes more than `cap` bytes or
/// takes longer than `seconds`; it is killed then. Any thread; blocks for `seconds` at most.
std::optional<std::string> commandOutput(const std::vector<std::string>& argv, double seconds, std::size_t cap);

}  // namespace veloria
