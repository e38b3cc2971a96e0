#pragma once

#include <optional>
#include <string>
#include <vector>

namespace veloria::tests {

/// What a program that ran to its end left behind.
struct ProcessResult {
  int exitCode = -1;  ///< 128 + n when signal n ended it
  std::string output;
  std::string errors;
};

/// Runs `program` with `arguments` in the folder `folder` (empty: this one), its standard input empty, and waits for
/// it. `environment` entries ("NAME=value") are added. It is killed after `seconds`.
ProcessResult runProcess(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& folder = {}, const std::vector<std::string>& environment = {},
                         int seconds = 120);

/// Whether a process still runs; one that has ended and that nobody has asked about does not.
bool isAlive(int pid);

/// Sets a variable of this process's environment (nothing: removes it), and back again at its end.
class EnvironmentChange {
 public:
  EnvironmentChange(const std::string& name, const std::optional<std::string>& value);
  ~EnvironmentChange();
  EnvironmentChange(const EnvironmentChange&) = delete;
  EnvironmentChange& operator=(const EnvironmentChange&) = delete;

 private:
  std::string name_;
  std::optional<std::string> former_;
};

/// A fresh folder that is removed with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  const std::string& path() const { return path_; }
  std::string file(const std::string& name) const { return path_ + "/" + name; }
  /// Writes a file in it and returns its path.
  std::string write(const std::string& name, const std::string& bytes) const;
  /// The same, in a folder that is made when there is none, for a program that anybody may run.
  std::string writeProgram(const std::string& name, const std::string& bytes) const;

 private:
  std::string path_;
};

}  // namespace veloria::tests
