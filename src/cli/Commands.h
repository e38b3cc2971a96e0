#pragma once

#include "base/Environment.h"
#include "cli/CommandLine.h"

/// The commands. Each returns its exit code; what goes wrong is thrown: UsageError, or another exception whose text is
/// one line for the user.
namespace veloria::cli {

int runBusy(const CommandLine& line, const Environment& environment);
int runIdle(const CommandLine& line, const Environment& environment);
int runOk(const CommandLine& line, const Environment& environment);
int runFail(const CommandLine& line, const Environment& environment);
int runSet(const CommandLine& line, const Environment& environment);
int runUnset(const CommandLine& line, const Environment& environment);
int runPalette(const CommandLine& line, const Environment& environment);
int runClear(const CommandLine& line, const Environment& environment);
int runStatus(const CommandLine& line, const Environment& environment);
int runProgram(const CommandLine& line, const Environment& environment);
int runPreset(const CommandLine& line, const Environment& environment);
int runPause(const CommandLine& line, const Environment& environment);
int runResume(const CommandLine& line, const Environment& environment);

}  // namespace veloria::cli
