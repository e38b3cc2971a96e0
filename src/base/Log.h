#pragma once

#include <string_view>

namespace veloria {

/// Diagnostics, enabled only if the environment variable NIMBRA_DEBUG is "1". Any thread.
class NimbraLog {
 public:
  /// Reads the environment once, at first use.
  static bool enabled();

  /// If enabled, writes "[nimbra] ", the text and a line feed to standard error in one write.
  static void debug(std::string_view text);

  /// printf-style debug(); formats only when enabled.
  [[gnu::format(printf, 1, 2)]] static void debugf(const char* format, ...);
};

/// Always writes to the system log: standard error, or the function of setSystemLog(). `text` has no final line feed.
/// Any thread.
void systemLog(std::string_view text);

/// Sends the lines of systemLog() to `write` instead of standard error. `write` is called on any thread and must not
/// throw.
void setSystemLog(void (*write)(std::string_view text));

}  // namespace veloria
