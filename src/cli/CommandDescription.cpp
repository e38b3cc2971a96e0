#include "cli/CommandDescription.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "base/PlatformWords.h"
#include "cli/Commands.h"

namespace veloria::cli {

namespace {

constexpr std::size_t anyNumber = SIZE_MAX;

constexpr std::array<CommandDescription, 13> commands{{
    {.name = "busy",
     .run = runBusy,
     .usage = "",
     .summary = "work has begun",
     .details = "Sets busy to 1, ok and err to 0.\n",
     .session = true,
     .verbose = true},
    {.name = "idle",
     .run = runIdle,
     .usage = "",
     .summary = "no work, nothing to report",
     .details = "Sets busy, ok and err to 0.\n",
     .session = true,
     .verbose = true},
    {.name = "ok",
     .run = runOk,
     .usage = "",
     .summary = "work has succeeded",
     .details = "Sets ok to 1, busy and err to 0.\n",
     .session = true,
     .verbose = true},
    {.name = "fail",
     .run = runFail,
     .usage = "",
     .summary = "work has failed: the band flashes red",
     .details = "Sets err to 1, busy and ok to 0, and lets the band flash for 1.5 seconds.\n",
     .session = true,
     .verbose = true},
    {.name = "set",
     .run = runSet,
     .usage = "NAME NUMBER",
     .summary = "set a channel for scene scripts, such as a0",
     .details =
         "NAME is 1 to 64 bytes of UTF-8 without control characters. Scripts can read it when it is a word of small "
         "letters,\ndigits and '_'. busy, ok and err are set in a session, other names only with --session, or when a "
         "session has them.\nWith --ttl and no --session, NAME lapses alone, as the session set-NAME. Put -- before a "
         "NAME that begins with '-'.\n",
     .fewest = 2,
     .most = 2,
     .session = true,
     .verbose = true},
    {.name = "unset",
     .run = runUnset,
     .usage = "NAME",
     .summary = "set a channel to 0, in all sessions",
     .details = "",
     .fewest = 1,
     .most = 1,
     .verbose = true},
    {.name = "palette",
     .run = runPalette,
     .usage = "C C [C C] | clear",
     .summary = "paint with 2 to 4 colours, or with the usual ones again",
     .details = "A colour is '#rrggbb' or rrggbb, hexadecimal. Quote the '#', which may begin a comment in a shell.\n",
     .fewest = 1,
     .most = anyNumber,
     .verbose = true},
    {.name = "clear",
     .run = runClear,
     .usage = "",
     .summary = "all channels to 0; no sessions, no palette, no flash",
     .details = "",
     .verbose = true},
    {.name = "status",
     .run = runStatus,
     .usage = "",
     .summary = "what is set, and whether Veloria runs",
     .details = "With --json: {\"channels\": {NAME: NUMBER}, \"sessions\": {NAME: {\"channels\": {NAME: NUMBER}, "
                "\"remaining\":\nSECONDS or null}}, \"palette\": [\"#rrggbb\", ...] or null, \"running\": true or "
                "false}. Without: only what is not 0.\n",
     .json = true},
    {.name = "run",
     .run = runProgram,
     .usage = "-- COMMAND ...",
     .summary = "busy while COMMAND runs, then ok or fail by its exit code",
     .details =
         "Exits as COMMAND does: with its exit code, or by the signal that ended it; 127 when it is not found, 126 "
         "when it\ncan't be started. Signals sent to nimbra are passed on to COMMAND. While it runs, busy stands in "
         "the session\nNAME, or run-PID, and lapses by itself --ttl seconds (60 when not given) after nimbra was "
         "killed. The outcome\nstands in the session NAME, or default, until the next command. A state file that "
         "can't be written does not\nstop COMMAND.\n",
     .fewest = 1,
     .most = anyNumber,
     .session = true,
     .verbose = true,
     .program = true},
    {.name = "preset",
     .run = runPreset,
     .usage = "NAME",
     .summary = "change the running Veloria to a look",
     .details = "For example 'nimbra preset \"Northern Lights\"'.\n",
     .fewest = 1,
     .most = 1},
    {.name = "pause", .run = runPause, .usage = "", .summary = "let the running Veloria go dark", .details = ""},
    {.name = "resume", .run = runResume, .usage = "", .summary = "light it again", .details = ""},
}};

std::string options(const CommandDescription& command) {
  std::string text;
  if (command.session) {
    text +=
        "  --session NAME   the session to write to; without it: default\n"
        "  --ttl SECONDS    the session lapses after so long; without it: never\n";
  }
  if (command.program) {
    text =
        "  --session NAME   the session to write to; without it: run-PID, the outcome to default\n"
        "  --ttl SECONDS    how long busy outlives a killed nimbra; without it: 60\n";
  }
  if (command.verbose) text += "  -v, --verbose    say on standard error what was written\n";
  if (command.json) text += "  --json           print JSON\n";
  return text + "  -h, --help       show this\n";
}

std::string padded(std::string text, std::size_t width) {
  text.resize(std::max(width, text.size()), ' ');
  return text;
}

}  // namespace

std::span<const CommandDescription> commandDescriptions() {
  return commands;
}

const CommandDescription* findCommand(std::string_view name) {
  const auto found = std::ranges::find(commands, name, &CommandDescription::name);
  return found == commands.end() ? nullptr : &*found;
}

std::string usageOf(const CommandDescription& command) {
  std::string usage = "nimbra " + std::string(command.name);
  if (!command.usage.empty()) usage += " " + std::string(command.usage);
  return usage;
}

std::string helpFor(const CommandDescription& command) {
  std::string line = "nimbra " + std::string(command.name) + " [options]";
  if (!command.usage.empty()) line += " " + std::string(command.usage);
  const std::string details = command.details.empty() ? "" : "\n" + std::string(command.details);
  return "Usage: " + line + "\n\n" + std::string(command.summary) + "\n" + details + "\nOptions:\n" + options(command);
}

std::string generalHelp() {
  std::string text =
      "nimbra drives Veloria's band of light: it writes channels into a small JSON file that Veloria watches.\n\n"
      "Usage:\n";
  for (const auto& command : commands) {
    text += "  " + padded(usageOf(command), 34) + "  " + std::string(command.summary) + "\n";
  }
  return text +
         "  nimbra --help | --version\n"
         "  nimbra COMMAND --help               a command's options\n\n"
         "Each writer can have a session of its own (--session NAME) that may lapse (--ttl SECONDS); busy, ok and err\n"
         "are the largest of all sessions, and a failure outranks a success.\n\n"
         "File: " +
         std::string(stateFilePlace) +
         "\n"
         "Exit codes: 0 done, 1 failed, 2 wrong usage; 'run' has its command's.\n";
}

}  // namespace veloria::cli
