#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace veloria {

/// Where encoded settings are kept, by key. Main thread.
class SettingsStorage {
 public:
  virtual ~SettingsStorage() = default;
  /// The bytes stored under `key`, or nothing when there are none or they can't be read (too large, not a file).
  virtual std::optional<std::string> read(std::string_view key) = 0;
  /// Replaces what is stored under `key`, all or nothing. False when that failed; what was there is then still there.
  virtual bool write(std::string_view key, std::string_view bytes) = 0;
  /// Returns once everything that was written is on disk, or has failed. Any thread.
  virtual void flush() {}
};

}  // namespace veloria
