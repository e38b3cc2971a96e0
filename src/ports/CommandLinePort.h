#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace veloria {

/// Port: what installing the command-line tool needs from the system. Any one thread at a time.
class CommandLinePort {
 public:
  virtual ~CommandLinePort() = default;
  CommandLinePort(const CommandLinePort&) = delete;
  CommandLinePort& operator=(const CommandLinePort&) = delete;

  /// The standard output of a program (`argv[0]`, found on the PATH, and its arguments), whatever its exit code. Empty
  /// if it can't be started, or was stopped because it wrote too much or took too long. Waits for seconds at most.
  virtual std::string output(const std::vector<std::string>& argv) = 0;
  /// Whether this is a folder in which the user may create and remove files.
  virtual bool isWritableFolder(const std::filesystem::path& folder) = 0;
  /// Whether this is, or links to, a file that the user may run.
  virtual bool isRunnable(const std::filesystem::path& file) = 0;

 protected:
  CommandLinePort() = default;
};

}  // namespace veloria
