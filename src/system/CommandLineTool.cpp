#include "system/CommandLineTool.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "base/Text.h"

namespace veloria {

namespace fs = std::filesystem;

namespace {

constexpr const char* toolName = "nimbra";
constexpr const char* defaultShell = "/bin/zsh";
constexpr const char* manualLink = "/usr/local/bin/nimbra";

/// False for text that a profile printed.
bool canBeFolder(const fs::path& path) {
  return path.is_absolute() && path.native().find('\0') == std::string::npos;
}

/// Quoted for a shell, to which only the quote itself is special.
std::string singleQuoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

/// Without dots, doubled slashes and a slash at the end.
fs::path plain(const fs::path& path) {
  const fs::path normal = path.lexically_normal();
  return normal.has_filename() ? normal : normal.parent_path();
}

void require(const std::error_code& error, const std::string& subject) {
  if (error) throw std::system_error(error, subject);
}

bool isLink(const fs::path& path) {
  std::error_code error;
  return fs::is_symlink(fs::symlink_status(path, error));
}

}  // namespace

CommandLineTool::CommandLineTool(CommandLinePort& port, const Environment& environment, Places places)
    : port_(port), shell_(environment("SHELL").value_or("")), places_(std::move(places)) {
  if (shell_.empty()) shell_ = defaultShell;
}

std::vector<fs::path> CommandLineTool::shellPathDirectories() {
  const std::string answer = port_.output({shell_, "-lc", R"(printf %s "$PATH")"});
  Folders folders;
  for (const std::string_view part : splitText(answer, ':')) {
    if (!part.empty()) folders.emplace_back(part);
  }
  return folders;
}

std::optional<fs::path> CommandLineTool::resolvedPath() {
  return resolvedIn(shellPathDirectories());
}

std::optional<fs::path> CommandLineTool::installDirectory() {
  return directoryIn(shellPathDirectories());
}

bool CommandLineTool::installedHere() {
  return linkIn(shellPathDirectories()).has_value();
}

std::string CommandLineTool::manualCommand() const {
  return "sudo ln -sf " + singleQuoted(places_.command.string()) + " " + manualLink;
}

CommandLineToolState CommandLineTool::look() {
  const Folders shellPath = shellPathDirectories();
  CommandLineToolState state;
  state.resolvedPath = resolvedIn(shellPath);
  state.installDirectory = directoryIn(shellPath);
  state.installedHere = linkIn(shellPath).has_value();
  state.ownFileOnPath = state.resolvedPath && isOwnFile(*state.resolvedPath);
  state.manualCommand = manualCommand();
  return state;
}

fs::path CommandLineTool::install() {
  const auto directory = installDirectory();
  if (!directory) throw std::runtime_error("No directory on your PATH is writable.");
  fs::path link = *directory / toolName;
  if (!port_.isRunnable(places_.command)) throw InstallError(link);
  if (!isOwnFile(link)) makeLink(link);
  if (!port_.isRunnable(link)) throw InstallError(link);
  return link;
}

void CommandLineTool::uninstall() {
  const auto link = linkIn(shellPathDirectories());
  if (!link) throw std::runtime_error("No link to this nimbra was found.");
  std::error_code error;
  fs::remove(*link, error);
  require(error, link->string());
}

CommandLineTool::Folders CommandLineTool::candidates(const Folders& shellPath) const {
  Folders folders = places_.usual;
  if (!places_.home.empty()) folders.push_back(places_.home / ".local/bin");
  std::ranges::copy_if(shellPath, std::back_inserter(folders), canBeFolder);
  return folders;
}

std::optional<fs::path> CommandLineTool::resolvedIn(const Folders& shellPath) {
  for (const fs::path& folder : candidates(shellPath)) {
    if (port_.isRunnable(folder / toolName)) return folder / toolName;
  }
  return std::nullopt;
}

std::optional<fs::path> CommandLineTool::directoryIn(const Folders& shellPath) {
  for (const fs::path& folder : shellPath) {
    if (canBeFolder(folder) && port_.isWritableFolder(folder)) return folder;
  }
  if (places_.home.empty()) return std::nullopt;
  const fs::path own = places_.home / ".local/bin";
  const bool onPath = std::ranges::any_of(shellPath, [&](const fs::path& each) { return plain(each) == plain(own); });
  return onPath ? std::optional(own) : std::nullopt;
}

std::optional<fs::path> CommandLineTool::linkIn(const Folders& shellPath) const {
  for (const fs::path& folder : candidates(shellPath)) {
    if (leadsHere(folder / toolName)) return folder / toolName;
  }
  return std::nullopt;
}

bool CommandLineTool::isOwnFile(const fs::path& path) const {
  std::error_code error;
  return path.filename() == places_.command.filename() &&
         fs::equivalent(path.parent_path(), places_.command.parent_path(), error);
}

bool CommandLineTool::leadsHere(const fs::path& link) const {
  std::error_code error;
  if (!isLink(link) || isOwnFile(link)) return false;
  const fs::path target = link.parent_path() / fs::read_symlink(link, error);
  return plain(target) == plain(places_.command) || fs::equivalent(link, places_.command, error);
}

void CommandLineTool::makeLink(const fs::path& link) const {
  std::error_code error;
  fs::create_directories(link.parent_path(), error);
  require(error, link.parent_path().string());
  if (isLink(link)) fs::remove(link, error);
  require(error, link.string());
  fs::create_symlink(places_.command, link, error);
  const bool occupied = error == std::errc::file_exists;
  require(error, link.string() + (occupied ? " is not a link and was left as it is" : ""));
}

}  // namespace veloria
