#pragma once

#include <filesystem>

#include "ports/SettingsStorage.h"

namespace veloria {

/// Settings as files `<folder>/<key>.json`. A settings file that is a symbolic link (people keep theirs elsewhere and
/// link to it) is read and written where it leads. Files that are not regular or have more than maximumJsonBytes read
/// as nothing; nothing on the disk makes a call wait longer than the disk itself, which a write does. Any thread; other
/// processes may use the folder too.
class FileSettingsStorage : public SettingsStorage {
 public:
  /// `folder` need not exist: the first write makes it, for the owner alone. With an empty path there is nothing to
  /// read and every write fails.
  explicit FileSettingsStorage(std::filesystem::path folder);

  std::optional<std::string> read(std::string_view key) override;
  bool write(std::string_view key, std::string_view bytes) override;

 private:
  /// Nothing for a key that is no plain file name.
  std::optional<std::filesystem::path> fileFor(std::string_view key) const;

  std::filesystem::path folder_;
};

}  // namespace veloria
