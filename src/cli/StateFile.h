#pragma once

#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "base/Environment.h"
#include "base/Result.h"

namespace veloria::cli {

/// The agent state file: a JSON object that several programs change. Blocks.
class StateFile {
 public:
  /// Changes the object in place. Called with the wall clock, in seconds since 1970, while the file is locked; called
  /// again with an empty object if the changed one is too large.
  using Change = std::function<void(nlohmann::json& state, double now)>;

  /// `lockSeconds`: how long change() waits for other programs.
  explicit StateFile(std::filesystem::path path, double lockSeconds = 10);

  const std::filesystem::path& path() const { return path_; }

  /// The object; an empty one if there is no file. Needs no lock: the file is always whole.
  Result<nlohmann::json> read() const;

  /// Reads, changes and replaces the file, excluding change() in other processes. Makes the folder if needed. A file
  /// that is not a JSON object, is too large or would become too large is moved to "state.json.rejected" and replaced
  /// by a new one; the value is then one line that says so, otherwise empty. Anything but a regular file is an error
  /// and stays.
  Result<std::string> change(const Change& change) const;

 private:
  std::filesystem::path path_;
  double lockSeconds_;
};

/// `state.json` in the user's data folder; nothing if the user's home is unknown.
std::optional<std::filesystem::path> stateFilePath(const Environment& environment);

}  // namespace veloria::cli
