#include "desktop/ChildProcess.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "base/MediaClock.h"

namespace veloria::desktop {

namespace {

constexpr int notStarted = 127;

std::string findProgram(const std::string& name) {
  if (name.find('/') != std::string::npos) return access(name.c_str(), X_OK) == 0 ? name : std::string();
  const char* path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "/usr/bin:/bin");
  for (std::string folder; std::getline(folders, folder, ':');) {
    const std::string candidate = folder + "/" + name;
    if (access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return {};
}

std::vector<std::string> mergedEnvironment(const std::map<std::string, std::string>& changes) {
  std::vector<std::string> result;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (!changes.contains(text.substr(0, text.find('=')))) result.push_back(text);
  }
  for (const auto& [name, value] : changes) {
    if (!value.empty()) result.push_back(name + "=" + value);
  }
  return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

int exitCodeOf(int status) {
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// Runs in the child, between fork and exec: system calls only.
[[noreturn]] void becomeProgram(const char* path, char* const* argv, char* const* environment, int output,
                                int keepDescriptor, pid_t parent) {
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(notStarted);
  std::signal(SIGPIPE, SIG_DFL);
  const int nothing = open("/dev/null", O_RDONLY);
  dup2(nothing, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  if (keepDescriptor >= 0) fcntl(keepDescriptor, F_SETFD, 0);
  execve(path, argv, environment);
  _exit(notStarted);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& argv, const std::map<std::string, std::string>& environment,
                           std::string outputFile, int keepDescriptor)
    : outputFile_(std::move(outputFile)) {
  const std::string path = findProgram(argv.at(0));
  if (path.empty()) throw std::runtime_error("There is no program " + argv[0] + ".");
  std::vector<std::string> arguments = argv;
  std::vector<std::string> variables = mergedEnvironment(environment);
  const auto argumentPointers = pointers(arguments);
  const auto variablePointers = pointers(variables);
  const int output = open(outputFile_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ == 0) {
    becomeProgram(path.c_str(), argumentPointers.data(), variablePointers.data(), output, keepDescriptor, parent);
  }
  const int error = errno;
  close(output);
  if (pid_ < 0) throw std::runtime_error("Can't start " + path + ": " + std::strerror(error));
  setpgid(pid_, pid_);
}

ChildProcess::~ChildProcess() {
  stop();
}

bool ChildProcess::running() {
  if (exitCode_) return false;
  int status = 0;
  if (waitpid(pid_, &status, WNOHANG) == pid_) exitCode_ = exitCodeOf(status);
  return !exitCode_;
}

std::optional<int> ChildProcess::wait(double seconds) {
  poll(seconds, [this] { return !running(); });
  return exitCode_;
}

void ChildProcess::signal(int number) {
  if (running()) kill(pid_, number);
}

void ChildProcess::stop() {
  if (running()) {
    kill(-pid_, SIGTERM);
    if (!wait(2)) {
      kill(-pid_, SIGKILL);
      wait(10);
    }
  }
  kill(-pid_, SIGKILL);  // what it may have left behind in its group
}

std::string ChildProcess::output() const {
  std::ifstream file(outputFile_);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string missingProgram(const std::vector<std::string>& programs) {
  for (const std::string& program : programs) {
    if (findProgram(program).empty()) return program;
  }
  return {};
}

void sleepBriefly() {
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

double now() {
  return mediaTime();
}

}  // namespace veloria::desktop
