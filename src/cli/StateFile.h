#pragma once

#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "base/Environment.h"
#include "base/Result.h"

namespace veloria::cli {

/// The agent state file: one JSON object that several programs change. Blocks.
class StateFile {
 public:
  /// Changes the object in place; called with the wall clock in seconds since 1970, once the file is ours, and again
  /// with an empty object when there is no room for the change in the former one.
  using Change = std::function<void(nlohmann::json& state, double now)>;

  /// `lockSeconds`: how long change() waits for others.
  explicit StateFile(std::filesystem::path path, double lockSeconds = 10);

  const std::filesystem::path& path() const { return path_; }

  /// The object; an empty one when there is no file. Takes no lock: the file is whole at every instant.
  Result<nlohmann::json> read() const;

  /// Reads, changes and replaces the file while no other change() of any process does. Makes the folder when there is
  /// none. A file that holds no JSON object, is too large or would become so is moved to "state.json.rejected" and a
  /// new one started; then the value is one line that says so, otherwise it is empty. What is no regular file is an
  /// error and stays.
  Result<std::string> change(const Change& change) const;

 private:
  std::filesystem::path path_;
  double lockSeconds_;
};

/// `state.json` in the user's data folder; nothing when nobody knows the user's home.
std::optional<std::filesystem::path> stateFilePath(const Environment& environment);

}  // namespace veloria::cli
