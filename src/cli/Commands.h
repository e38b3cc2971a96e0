#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/Environment.h"
#include "cli/StateChanges.h"

/// The commands, their options and their help.
namespace veloria::cli {

/// A command's options and operands.
struct CommandLine {
  std::vector<std::string> operands;
  std::optional<std::string> session;
  std::optional<double> ttl;
  bool verbose = false;
  bool json = false;
  bool help = false;  ///< if set, nothing else was checked

  /// Whether --session or --ttl was given.
  bool choosesSession() const { return session || ttl; }
  SessionChoice sessionChoice() const { return {session.value_or(SessionChoice().name), ttl}; }
};

/// A command: its function, its operands and options, and its help.
struct CommandDescription {
  std::string_view name;
  int (*run)(const CommandLine& line, const Environment& environment);
  std::string_view usage;    ///< the operands, as in the help
  std::string_view summary;  ///< one line
  std::string_view details;  ///< whole lines; may be empty
  std::size_t fewest = 0;    ///< the fewest operands
  std::size_t most = 0;
  bool session = false;  ///< takes --session and --ttl
  bool verbose = false;  ///< takes -v
  bool json = false;     ///< takes --json
  bool program = false;  ///< the first operand ends the options and begins a program's command line
};

/// All commands, in the order of the help.
std::span<const CommandDescription> commandDescriptions();

/// Null if there is no such command.
const CommandDescription* findCommand(std::string_view name);

/// "nimbra set NAME NUMBER"
std::string usageOf(const CommandDescription& command);

/// The texts of --help.
std::string helpFor(const CommandDescription& command);
std::string generalHelp();
/// Parses the arguments after the command's name. Options may come before and after operands, up to "--"; "-" followed
/// by a digit or a point begins a number. Throws UsageError.
CommandLine parseCommandLine(const CommandDescription& command, const std::vector<std::string>& arguments);

/// The commands. Each returns its exit code. Errors are thrown: UsageError, or another exception whose text is one line
/// for the user.
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
