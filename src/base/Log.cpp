#include "base/Log.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace veloria {

namespace {

void writeLine(std::string_view prefix, std::string_view text) {
  std::string line;
  line.reserve(prefix.size() + text.size() + 1);
  line.append(prefix).append(text).push_back('\n');
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void writePlainLine(std::string_view text) {
  writeLine("", text);
}

std::atomic<void (*)(std::string_view)> systemLogWriter = writePlainLine;

}  // namespace

bool NimbraLog::enabled() {
  static const bool on = [] {
    const char* value = std::getenv("NIMBRA_DEBUG");
    return value != nullptr && std::string_view(value) == "1";
  }();
  return on;
}

void NimbraLog::debug(std::string_view text) {
  if (enabled()) writeLine("[nimbra] ", text);
}

void NimbraLog::debugf(const char* format, ...) {
  if (!enabled()) return;
  std::va_list arguments;
  va_start(arguments, format);
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  if (length > 0) {
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    writeLine("[nimbra] ", text);
  }
  va_end(again);
}

void systemLog(std::string_view text) {
  systemLogWriter.load()(text);
}

void setSystemLog(void (*write)(std::string_view text)) {
  systemLogWriter = write;
}

}  // namespace veloria
