// A desktop entry of the autostart folder, from any bytes: read as one, and written for a program of that path, which
// must then come out of the entry's command again and nothing else with it.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/TextLines.h"
#include "platform/linux/system/AutostartEntry.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

std::string unescaped(std::string_view value) {
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] != '\\') {
      text += value[i];
      continue;
    }
    require(++i < value.size());
    constexpr std::string_view letters = "nrt\\";
    require(letters.find(value[i]) != letters.npos);
    text += "\n\r\t\\"[letters.find(value[i])];
  }
  return text;
}

/// The last argument, which must be quoted as the Desktop Entry format says.
std::string lastArgument(std::string_view command) {
  std::string argument;
  bool quoted = false;
  for (std::size_t i = 0; i < command.size(); ++i) {
    char c = command[i];
    if (c == '"') {
      if (!quoted) argument.clear();
      quoted = !quoted;
      continue;
    }
    if (quoted && c == '\\') {
      require(++i < command.size());
      c = command[i];
      require(std::string_view("\"`$\\").find(c) != std::string_view::npos);
    } else if (c == '%') {
      require(++i < command.size() && command[i] == '%');
    }
    if (quoted) argument += c;
  }
  require(!quoted);
  return argument;
}

void writeAndRead(const std::string& path) {
  const auto entry = veloria::autostartEntry(path);
  if (!entry) return;
  require(veloria::startsAtLogin(*entry));
  int commands = 0;
  for (const std::string_view line : veloria::splitText(*entry, '\n')) {
    const auto pair = veloria::keyAndValue(line);
    if (!pair || pair->first != "Exec") continue;
    ++commands;
    require(lastArgument(unescaped(line.substr(line.find('=') + 1))) == path);
  }
  require(commands == 1 && veloria::splitText(*entry, '\n').size() == 9);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  veloria::startsAtLogin(bytes);
  writeAndRead("/" + bytes);
  return 0;
}
