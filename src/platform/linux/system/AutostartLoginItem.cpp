#include "platform/linux/system/AutostartLoginItem.h"

#include <QByteArrayView>
#include <system_error>
#include <utility>

#include "base/Files.h"
#include "base/Text.h"
#include "platform/posix/files/UserFolders.h"

namespace veloria {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t mostBytes = std::size_t{64} << 10;

/// One argument of a command line: always quoted, with the percent sign that begins a field doubled.
std::string quotedArgument(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (std::string_view("\"`$\\").find(c) != std::string_view::npos) quoted += '\\';
    if (c == '%') quoted += '%';
    quoted += c;
  }
  return quoted + '"';
}

/// A value as it is written in the file, on one line.
std::string escapedValue(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '\\':
        escaped += "\\\\";
        break;
      case '\n':
        escaped += "\\n";
        break;
      case '\r':
        escaped += "\\r";
        break;
      case '\t':
        escaped += "\\t";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

/// A program's path must not contain an equals sign, and GLib looks for the program before it halves percent signs, so
/// a path with either becomes the argument of a shell.
std::string commandLine(const std::string& path) {
  const bool plain = path.find_first_of("=%") == std::string::npos;
  return plain ? quotedArgument(path) : "/bin/sh -c " + quotedArgument(R"(exec "$0")") + " " + quotedArgument(path);
}

bool isTrue(std::string_view value) {
  return value == "true" || value == "1";
}

}  // namespace

Result<std::string> autostartEntry(const std::filesystem::path& program) {
  const std::string path = program.string();
  if (!program.is_absolute() || path.find('\0') != std::string::npos || !QByteArrayView(path).isValidUtf8()) {
    return Failure{path + ": a desktop entry can't hold this path"};
  }
  return "[Desktop Entry]\n"
         "Type=Application\n"
         "Name=Veloria\n"
         "Comment=Living light over the panel\n"
         "Exec=" +
         escapedValue(commandLine(path)) +
         "\n"
         "Terminal=false\n"
         "StartupNotify=false\n"
         "X-GNOME-Autostart-enabled=true\n";
}

bool startsAtLogin(std::string_view entry) {
  bool inside = false;
  bool command = false;
  bool hidden = false;
  bool enabled = true;
  for (const std::string_view line : splitText(entry, '\n')) {
    if (line.starts_with('[')) inside = trimmed(line) == "[Desktop Entry]";
    const auto pair = keyAndValue(line);
    if (!inside || !pair) continue;
    const auto& [key, value] = *pair;
    if (key == "Exec") command = !value.empty();
    if (key == "Hidden") hidden = isTrue(value);
    if (key == "X-GNOME-Autostart-enabled") enabled = isTrue(value);
  }
  return command && !hidden && enabled;
}

AutostartLoginItem::AutostartLoginItem(const Environment& environment, fs::path program)
    : program_(std::move(program)) {
  if (const auto own = configFolder(environment)) file_ = own->parent_path() / "autostart" / "veloria.desktop";
}

bool AutostartLoginItem::isRegistered() {
  const auto entry = readFileBounded(file_, mostBytes);
  return entry && startsAtLogin(*entry);
}

Result<Done> AutostartLoginItem::add() {
  if (file_.empty()) return Failure{"there is no home folder"};
  const auto entry = autostartEntry(program_);
  if (!entry) return Failure{entry.error()};
  if (!makeUserFolder(file_.parent_path())) return Failure{file_.parent_path().string() + ": it can't be made"};
  return writeFileAtomically(file_, *entry);
}

Result<Done> AutostartLoginItem::remove() {
  if (!isRegistered()) return Done{};
  std::error_code error;
  fs::remove(file_, error);
  if (error) return Failure{file_.string() + ": " + error.message()};
  return Done{};
}

}  // namespace veloria
