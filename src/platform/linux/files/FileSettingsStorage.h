#pragma once

#include <filesystem>

#include "ports/SettingsStorage.h"

namespace veloria {

/// Stores settings in files `<folder>/<key>.json`. Follows a settings file that is a symbolic link, for reading and
/// writing. A file that is not regular or has more than maximumJsonBytes counts as missing. Blocks on nothing but the
/// disk. Any thread; other processes may use the folder too.
class FileSettingsStorage : public SettingsStorage {
 public:
  /// The first write makes `folder`, for the owner alone, if it does not exist. With an empty path every read is empty
  /// and every write fails.
  explicit FileSettingsStorage(std::filesystem::path folder);

  std::optional<std::string> read(std::string_view key) override;
  bool write(std::string_view key, std::string_view bytes) override;

 private:
  /// Empty if the key is not a plain file name.
  std::optional<std::filesystem::path> fileFor(std::string_view key) const;

  std::filesystem::path folder_;
};

}  // namespace veloria
