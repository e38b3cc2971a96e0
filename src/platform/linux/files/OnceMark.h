#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace veloria {

/// Remembers, over restarts, that something was done: an empty file. Any thread.
class OnceMark {
 public:
  /// The file `name` in `folder`, which need not exist; without a folder nothing can be remembered.
  OnceMark(const std::optional<std::filesystem::path>& folder, const std::string& name);

  bool isSet() const;
  /// Failures go to the diagnostics: the worst that follows is that it is done again.
  void set() const;

 private:
  std::optional<std::filesystem::path> file_;
};

}  // namespace veloria
