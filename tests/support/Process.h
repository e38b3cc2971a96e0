#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace veloria::tests {

/// Seconds of a clock that never goes back.
double now();
void sleepBriefly();
/// Calls `condition` every few milliseconds until it holds; false after `seconds`.
bool poll(double seconds, const std::function<bool()>& condition);

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

/// A running program in a process group of its own. The whole group ends with this object, and with the test itself,
/// however that ends. What it writes goes to a file.
class ChildProcess {
 public:
  /// `argv[0]` is looked up on the PATH. `environment` is laid over the test's own; an empty value removes a variable.
  /// Throws std::runtime_error if it can't be started.
  ChildProcess(const std::vector<std::string>& argv, const std::map<std::string, std::string>& environment,
               std::string outputFile);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t pid() const { return pid_; }
  bool running();
  /// The exit code (128 + the signal if one ended it), nothing if it still runs after `seconds`.
  std::optional<int> wait(double seconds);
  void signal(int number);
  /// Asks the group to end, kills it after two seconds, and waits for the program itself.
  void stop();
  /// What it has written so far.
  std::string output() const;

 private:
  pid_t pid_ = -1;
  std::optional<int> exitCode_;
  std::string outputFile_;
};

/// The first of `programs` that is not on the PATH; empty if all are.
std::string missingProgram(const std::vector<std::string>& programs);

/// Whether a process still runs. One that has ended does not, even if its parent has not waited for it.
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

/// A fresh folder that is removed with everything in it, unless VELORIA_KEEP_DESKTOP is set.
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
  /// The same for a program that anybody may run; its folder is made if there is none.
  std::string writeProgram(const std::string& name, const std::string& bytes) const;

 private:
  std::string path_;
};

}  // namespace veloria::tests
