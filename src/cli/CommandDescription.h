#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "base/Environment.h"

namespace veloria::cli {

struct CommandLine;

/// A command: what runs it, what its line may hold, and its help.
struct CommandDescription {
  std::string_view name;
  int (*run)(const CommandLine& line, const Environment& environment);
  std::string_view usage;    ///< what follows the name, without options
  std::string_view summary;  ///< one line
  std::string_view details;  ///< whole lines; may be empty
  std::size_t fewest = 0;    ///< operands
  std::size_t most = 0;
  bool session = false;  ///< takes --session and --ttl
  bool verbose = false;  ///< takes -v
  bool json = false;     ///< takes --json
  bool program = false;  ///< the first operand ends the options: it and what follows are a program's command line
};

/// All of them, in the order of the help.
std::span<const CommandDescription> commandDescriptions();

/// Nullptr when there is none.
const CommandDescription* findCommand(std::string_view name);

/// "nimbra set NAME NUMBER"
std::string usageOf(const CommandDescription& command);

/// What --help prints.
std::string helpFor(const CommandDescription& command);
std::string generalHelp();

}  // namespace veloria::cli
