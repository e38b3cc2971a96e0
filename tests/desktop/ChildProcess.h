#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace veloria::desktop {

/// A program that was started, in a process group of its own. The whole group ends with this object, and with the test
/// itself, however that ends. What it writes goes to a file.
class ChildProcess {
 public:
  /// `argv[0]` is looked up on the PATH. `environment` is laid over the test's own; an empty value removes a variable.
  /// `keepDescriptor` stays open in the child (-1: none). Throws std::runtime_error when it can't be started.
  ChildProcess(const std::vector<std::string>& argv, const std::map<std::string, std::string>& environment,
               std::string outputFile, int keepDescriptor = -1);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t pid() const { return pid_; }
  bool running();
  /// The exit code (128 + the signal when it was killed), nothing when it still runs after `seconds`.
  std::optional<int> wait(double seconds);
  void signal(int number);
  /// Asks the group to end, insists after two seconds, and waits for the program itself.
  void stop();
  /// What it has written so far.
  std::string output() const;

 private:
  pid_t pid_ = -1;
  std::optional<int> exitCode_;
  std::string outputFile_;
};

/// The first of `programs` that is not on the PATH; empty when all are.
std::string missingProgram(const std::vector<std::string>& programs);

/// Calls `condition` every few milliseconds until it holds; false after `seconds`.
template <typename Condition>
bool poll(double seconds, Condition condition);

void sleepBriefly();
double now();

template <typename Condition>
bool poll(double seconds, Condition condition) {
  const double end = now() + seconds;
  while (!condition()) {
    if (now() > end) return false;
    sleepBriefly();
  }
  return true;
}

}  // namespace veloria::desktop
