#pragma once

#include "ports/SettingsStorage.h"

namespace veloria {

/// Settings in the program's user defaults, as data under their key. Values that are not data, or have more than
/// maximumJsonBytes, read as nothing. Main thread.
class UserDefaultsStorage final : public SettingsStorage {
 public:
  std::optional<std::string> read(std::string_view key) override;
  /// Always true: the system writes to the disk later.
  bool write(std::string_view key, std::string_view bytes) override;
};

}  // namespace veloria
