#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/CommandDescription.h"
#include "cli/SessionChoice.h"

namespace veloria::cli {

/// A command's options and operands.
struct CommandLine {
  std::vector<std::string> operands;
  std::optional<std::string> session;
  std::optional<double> ttl;
  bool verbose = false;
  bool json = false;
  bool help = false;  ///< then nothing else has been checked

  /// Whether a session was asked for, by name or by its lifetime.
  bool choosesSession() const { return session || ttl; }
  SessionChoice sessionChoice() const { return {session.value_or(SessionChoice().name), ttl}; }
};

/// `arguments`: what follows the command's name. Options may stand before and after operands, up to "--"; "-" followed
/// by a digit or a point begins a number. Throws UsageError.
CommandLine parseCommandLine(const CommandDescription& command, const std::vector<std::string>& arguments);

}  // namespace veloria::cli
