#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace veloria {

/// What the installer of the command-line tool asks the system. Any one thread at a time.
class CommandLinePort {
 public:
  virtual ~CommandLinePort() = default;
  CommandLinePort(const CommandLinePort&) = delete;
  CommandLinePort& operator=(const CommandLinePort&) = delete;

  /// What a program (`argv[0]`, looked up on the PATH, and its arguments) writes to its standard output, however it
  /// ends. Empty when it can't be started, or writes or takes so much that it was ended. Waits for it, for seconds at
  /// most.
  virtual std::string output(const std::vector<std::string>& argv) = 0;
  /// Whether it is a folder in which the user may make and remove files.
  virtual bool isWritableFolder(const std::filesystem::path& folder) = 0;
  /// Whether it is, or leads to, a file that the user may run.
  virtual bool isRunnable(const std::filesystem::path& file) = 0;

 protected:
  CommandLinePort() = default;
};

}  // namespace veloria
