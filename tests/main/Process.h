#pragma once

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

 private:
  std::string path_;
};

}  // namespace veloria::tests
