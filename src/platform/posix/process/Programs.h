#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"

namespace veloria {

// Other programs: finding, starting and querying them. Any thread.

/// True if it is a file (links are followed) that this user may run.
bool isRunnable(const std::filesystem::path& file);

/// True if it is a folder (links are followed) in which this user may make and remove files.
bool isWritableFolder(const std::filesystem::path& folder);

/// The first runnable `name` in a search path of PATH's form. Ignores folders that are not absolute.
std::optional<std::filesystem::path> findProgram(const std::string& name, std::string_view searchPath);

/// Starts a program that outlives this one: in a session of its own, with empty input and its output discarded. Returns
/// once it runs, without waiting for its end. The error is a sentence.
Result<Done> startDetached(const std::filesystem::path& program, const std::vector<std::string>& arguments);

/// The result of a program that has ended by itself.
struct ProgramOutput {
  std::string text;  ///< its standard output, any bytes
  int exitCode = 0;  ///< 128 + n if signal n ended it
};

/// Runs a short program (no shell; `argv[0]` is looked up on the PATH) with empty input, without a terminal and with
/// its errors discarded. Empty if there is no such program, or if it writes more than `cap` bytes or takes longer than
/// `seconds`; then it is killed, and so are the programs in its session. Programs that it leaves running at its own end
/// are neither awaited nor ended. Blocks for `seconds` at most.
std::optional<ProgramOutput> runProgram(const std::vector<std::string>& argv, double seconds, std::size_t cap);

/// The output of runProgram(); empty also if the exit code is not 0.
std::optional<std::string> commandOutput(const std::vector<std::string>& argv, double seconds, std::size_t cap);

}  // namespace veloria
