#include "platform/linux/system/AutostartEntry.h"

#include <QByteArrayView>

#include "base/TextLines.h"

namespace veloria {

namespace {

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

/// A value as it stands in the file, where it must not break its line.
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

/// A program's path must not hold an equals sign, and GLib looks for it before it halves percent signs, so such
/// programs are the argument of another one.
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

}  // namespace veloria
