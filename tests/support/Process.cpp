#include "Process.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "base/MediaClock.h"
#include "base/OwnedDescriptor.h"

#ifdef __linux__
#include <sys/prctl.h>
#endif

extern "C" char** environ;

namespace veloria::tests {

namespace {

constexpr int notStarted = 127;

std::string findProgram(const std::string& name) {
  if (name.find('/') != std::string::npos) return access(name.c_str(), X_OK) == 0 ? name : std::string();
  const char* path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "/bin");
  for (std::string folder; std::getline(folders, folder, ':');) {
    const std::string candidate = folder + "/" + name;
    if (access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return {};
}

struct Launch {
  std::vector<std::string> argv;
  std::map<std::string, std::optional<std::string>> environment;  ///< nothing: the variable is removed
  std::string folder;
  int output;
  int errors;
};

std::vector<std::string> variablesOf(const Launch& launch) {
  std::vector<std::string> result;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (!launch.environment.contains(text.substr(0, text.find('=')))) result.push_back(text);
  }
  for (const auto& [name, value] : launch.environment) {
    if (value) result.push_back(name + "=" + *value);
  }
  return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

// Runs in the child, between fork and exec: system calls only.
[[noreturn]] void becomeProgram(const Launch& launch, const char* path, char* const* argv, char* const* environment,
                                pid_t parent) {
  setpgid(0, 0);
#ifdef __linux__
  prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
  if (getppid() != parent) _exit(notStarted);
  ::signal(SIGPIPE, SIG_DFL);
  dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
  dup2(launch.output, STDOUT_FILENO);
  dup2(launch.errors, STDERR_FILENO);
  if (!launch.folder.empty() && chdir(launch.folder.c_str()) != 0) _exit(notStarted);
  execve(path, argv, environment);
  _exit(notStarted);
}

pid_t start(Launch launch) {
  const std::string path = findProgram(launch.argv.at(0));
  if (path.empty()) throw std::runtime_error("There is no program " + launch.argv[0] + ".");
  std::vector<std::string> variables = variablesOf(launch);
  const auto argv = pointers(launch.argv);
  const auto environment = pointers(variables);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child == 0) becomeProgram(launch, path.c_str(), argv.data(), environment.data(), parent);
  if (child < 0) throw std::runtime_error("Can't start " + path);
  setpgid(child, child);
  return child;
}

std::optional<int> exitCodeOf(pid_t child) {
  int status = 0;
  if (waitpid(child, &status, WNOHANG) != child) return std::nullopt;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

OwnedDescriptor temporaryFile() {
  std::string path = std::filesystem::temp_directory_path() / "veloria-output-XXXXXX";
  OwnedDescriptor file(mkostemp(path.data(), O_CLOEXEC));
  unlink(path.c_str());
  return file;
}

std::string contents(const OwnedDescriptor& file) {
  std::string text(static_cast<std::size_t>(std::max<off_t>(lseek(file.get(), 0, SEEK_END), 0)), '\0');
  text.resize(static_cast<std::size_t>(std::max<ssize_t>(pread(file.get(), text.data(), text.size(), 0), 0)));
  return text;
}

}  // namespace

double now() {
  return mediaTime();
}

void sleepBriefly() {
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

bool poll(double seconds, const std::function<bool()>& condition) {
  const double end = now() + seconds;
  while (!condition()) {
    if (now() > end) return false;
    sleepBriefly();
  }
  return true;
}

ProcessResult runProcess(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& folder, const std::vector<std::string>& environment, int seconds) {
  if (findProgram(program).empty()) return {notStarted, "", "There is no program " + program};
  const OwnedDescriptor output = temporaryFile();
  const OwnedDescriptor errors = temporaryFile();
  Launch launch{{program}, {}, folder, output.get(), errors.get()};
  launch.argv.insert(launch.argv.end(), arguments.begin(), arguments.end());
  for (const std::string& entry : environment) {
    const auto equals = entry.find('=');
    launch.environment[entry.substr(0, equals)] = entry.substr(equals + 1);
  }
  const pid_t child = start(std::move(launch));
  std::optional<int> exitCode;
  const bool ended = poll(seconds, [&] { return (exitCode = exitCodeOf(child)).has_value(); });
  if (!ended) {
    kill(-child, SIGKILL);
    poll(10, [&] { return (exitCode = exitCodeOf(child)).has_value(); });
  }
  return {exitCode.value_or(-1), contents(output), contents(errors) + (ended ? "" : "[killed: took too long]")};
}

ChildProcess::ChildProcess(const std::vector<std::string>& argv, const std::map<std::string, std::string>& environment,
                           std::string outputFile)
    : outputFile_(std::move(outputFile)) {
  const OwnedDescriptor file(open(outputFile_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
  Launch launch{argv, {}, {}, file.get(), file.get()};
  for (const auto& [name, value] : environment) {
    launch.environment[name] = value.empty() ? std::nullopt : std::optional(value);
  }
  pid_ = start(std::move(launch));
}

ChildProcess::~ChildProcess() {
  stop();
}

bool ChildProcess::running() {
  if (!exitCode_) exitCode_ = exitCodeOf(pid_);
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
    wait(2);
  }
  kill(-pid_, SIGKILL);  // also what it may have left behind in its group
  wait(10);
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

bool isAlive(int pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  const std::string text(std::istreambuf_iterator<char>(file), {});
  const auto name = text.rfind(')');
  return name != std::string::npos && text.compare(name, 3, ") Z") != 0;
}

EnvironmentChange::EnvironmentChange(const std::string& name, const std::optional<std::string>& value) : name_(name) {
  if (const char* former = getenv(name.c_str())) former_ = former;
  value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
}

EnvironmentChange::~EnvironmentChange() {
  former_ ? setenv(name_.c_str(), former_->c_str(), 1) : unsetenv(name_.c_str());
}

TemporaryFolder::TemporaryFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "veloria-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
  if (std::getenv("VELORIA_KEEP_DESKTOP") != nullptr) return;
  // A program that is just dying may still write into it.
  poll(2, [this] {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
    return !error;
  });
}

std::string TemporaryFolder::write(const std::string& name, const std::string& bytes) const {
  std::ofstream(file(name), std::ios::binary) << bytes;
  return file(name);
}

std::string TemporaryFolder::writeProgram(const std::string& name, const std::string& bytes) const {
  std::filesystem::create_directories(std::filesystem::path(file(name)).parent_path());
  write(name, bytes);
  std::filesystem::permissions(file(name), std::filesystem::perms(0755));
  return file(name);
}

}  // namespace veloria::tests
