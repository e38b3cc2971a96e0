#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace veloria {

/// What a program left behind that has ended by itself.
struct ProgramOutput {
  std::string text;  ///< what it wrote to its standard output, any bytes
  int exitCode = 0;  ///< 128 + n when signal n ended it
};

/// Runs a short program (no shell; `argv[0]` is looked up on the PATH) with nothing to read, without a terminal and
/// with its errors thrown away. Nothing when there is no such program, or when it writes more than `cap` bytes or takes
/// longer than `seconds`: it is killed then, and with it whatever it has started that did not leave its session.
/// Programs that it leaves running when it ends are neither waited for nor ended. Any thread; blocks for `seconds` at
/// most.
std::optional<ProgramOutput> runProgram(const std::vector<std::string>& argv, double seconds, std::size_t cap);

/// What runProgram() says that the program wrote; nothing when that has failed (an exit code other than 0) too.
std::optional<std::string> commandOutput(const std::vector<std::string>& argv, double seconds, std::size_t cap);

}  // namespace veloria
