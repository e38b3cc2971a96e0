#pragma once

#include <filesystem>
#include <optional>

#include "base/Result.h"

namespace veloria {

/// Remembers across restarts what clearing the panel changed in GNOME. Main thread.
class ClearingMark {
 public:
  enum class Stage {
    waiting,  ///< nothing is changed yet: GNOME Shell must find the extension first
    enabled,  ///< the extension was switched on
  };
  struct Value {
    Stage stage = Stage::waiting;
    /// GNOME's switch for all extensions was off before, and the user has agreed that it goes on.
    bool switchedOn = false;
  };

  /// Reads the file `gnome-panel` in `folder`, which need not exist. A file with any other content counts as none.
  explicit ClearingMark(const std::optional<std::filesystem::path>& folder);

  const std::optional<Value>& value() const { return value_; }
  /// All or nothing. The error is for a person.
  Result<Done> set(const Value& value);
  void clear();

 private:
  std::optional<std::filesystem::path> file_;
  std::optional<Value> value_;
};

}  // namespace veloria
