#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace veloria {

/// Remembers across restarts, by an empty file, that something was done. Any thread.
class OnceMark {
 public:
  /// The file is `name` in `folder`, which need not exist. Without a folder nothing is remembered.
  OnceMark(const std::optional<std::filesystem::path>& folder, const std::string& name);

  bool isSet() const;
  /// A failure goes to the diagnostics only: at worst the thing is done again.
  void set() const;

 private:
  std::optional<std::filesystem::path> file_;
};

}  // namespace veloria
