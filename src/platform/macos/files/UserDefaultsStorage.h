#pragma once

#include "ports/SettingsStorage.h"

namespace veloria {

/// Settings in the program's user defaults, as data under their key. What has more than maximumJsonBytes or is no data
/// reads as nothing. Main thread.
class UserDefaultsStorage final : public SettingsStorage {
 public:
  std::optional<std::string> read(std::string_view key) override;
  /// The system writes it to the disk a little later.
  bool write(std::string_view key, std::string_view bytes) override;
};

}  // namespace veloria
