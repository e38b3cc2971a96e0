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
     .summary = "nothing is going on",
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
     .details = "Sets err to 1, busy and ok to 0, and makes the band flash for 1.5 seconds.\n",
     .session = true,
     .verbose = true},
    {.name = "set",
     .run = runSet,
     .usage = "NAME NUMBER",
     .summary = "set a channel for scene scripts, such as a0",
     .details =
         R"(NAME is 1 to 64 bytes of UTF-8 without control characters. Scripts can read it if it is a word of small letters,
digits and '_'. busy, ok and err always belong to a session; other names do only with --session, or if a session
already has them. With --ttl but no --session, only NAME expires, as the session set-NAME. Put -- before a NAME
that begins with '-'.
)",
     .fewest = 2,
     .most = 2,
     .session = true,
     .verbose = true},
    {.name = "unset",
     .run = runUnset,
     .usage = "NAME",
     .summary = "set a channel to 0 in all sessions",
     .details = "",
     .fewest = 1,
     .most = 1,
     .verbose = true},
    {.name = "palette",
     .run = runPalette,
     .usage = "C C [C C] | clear",
     .summary = "use 2 to 4 colours, or go back to the normal ones",
     .details = "Colours are '#rrggbb' or rrggbb in hexadecimal. Quote '#', which starts a comment in a shell.\n",
     .fewest = 1,
     .most = anyNumber,
     .verbose = true},
    {.name = "clear",
     .run = runClear,
     .usage = "",
     .summary = "set all channels to 0; remove sessions, palette and flash",
     .details = "",
     .verbose = true},
    {.name = "status",
     .run = runStatus,
     .usage = "",
     .summary = "show what is set and whether Veloria is running",
     .details =
         R"(With --json: {"channels": {NAME: NUMBER}, "sessions": {NAME: {"channels": {NAME: NUMBER}, "remaining":
SECONDS or null}}, "palette": ["#rrggbb", ...] or null, "running": true or false}. Without: only values other than 0.
)",
     .json = true},
    {.name = "run",
     .run = runProgram,
     .usage = "-- COMMAND ...",
     .summary = "busy while COMMAND runs, then ok or fail by its exit code",
     .details =
         R"(Exits as COMMAND does: with its exit code, or by the signal that ended it; 127 if it is not found, 126 if it
can't be started. Passes signals sent to nimbra on to COMMAND. While COMMAND runs, busy is in the session NAME, or
run-PID, and expires --ttl seconds (60 if not given) after nimbra was killed. The outcome stays in the session NAME,
or default, until the next command. If the state file can't be written, COMMAND runs anyway.
)",
     .fewest = 1,
     .most = anyNumber,
     .session = true,
     .verbose = true,
     .program = true},
    {.name = "preset",
     .run = runPreset,
     .usage = "NAME",
     .summary = "switch the running band to a look",
     .details = "For example 'nimbra preset \"Northern Lights\"'.\n",
     .fewest = 1,
     .most = 1},
    {.name = "pause", .run = runPause, .usage = "", .summary = "pause the running band", .details = ""},
    {.name = "resume", .run = runResume, .usage = "", .summary = "resume it", .details = ""},
}};

std::string options(const CommandDescription& command) {
  std::string text;
  if (command.session) {
    text +=
        "  --session NAME   session to write to; 'default' if not given\n"
        "  --ttl SECONDS    the session expires after this time; never if not given\n";
  }
  if (command.program) {
    text =
        "  --session NAME   session to write to; if not given, run-PID, and 'default' for the outcome\n"
        "  --ttl SECONDS    how long busy outlives a killed nimbra; 60 if not given\n";
  }
  if (command.verbose) text += "  -v, --verbose    report on standard error what was written\n";
  if (command.json) text += "  --json           print JSON\n";
  return text + "  -h, --help       show this help\n";
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
         "Each writer can use its own session (--session NAME), which can expire (--ttl SECONDS). busy, ok and err are "
         "the\n"
         "largest values of all sessions; a failure outranks a success.\n\n"
         "File: " +
         std::string(stateFilePlace) +
         "\n"
         "Exit codes: 0 success, 1 failure, 2 usage error; 'run' exits as its command does.\n";
}

}  // namespace veloria::cli
