#pragma once

#include <string_view>

namespace veloria {

/// Diagnostics, off unless the environment variable NIMBRA_DEBUG is exactly "1". Any thread.
class NimbraLog {
 public:
  /// Read from the environment once, at first use.
  static bool enabled();

  /// When enabled, writes "[nimbra] ", the text and a line feed to standard error in one write.
  static void debug(std::string_view text);

  /// printf-style debug(); formats only when enabled.
  [[gnu::format(printf, 1, 2)]] static void debugf(const char* format, ...);
};

/// Writes to the system log, always: to standard error, or to where setSystemLog() said. `text` has no line feed at its
/// end. Any thread.
void systemLog(std::string_view text);

/// Where the lines of systemLog() go instead of to standard error. `write` is called on any thread and must not throw.
void setSystemLog(void (*write)(std::string_view text));

}  // namespace veloria
