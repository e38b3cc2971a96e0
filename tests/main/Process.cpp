#include "Process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "base/SocketCalls.h"

namespace veloria::tests {

namespace {

[[noreturn]] void becomeProgram(const std::string& program, const std::vector<std::string>& arguments,
                                const std::string& folder, const std::vector<std::string>& environment, int out,
                                int err) {
  const int none = open("/dev/null", O_RDONLY);
  dup2(none, STDIN_FILENO);
  dup2(out, STDOUT_FILENO);
  dup2(err, STDERR_FILENO);
  if (!folder.empty() && chdir(folder.c_str()) != 0) _exit(126);
  for (const auto& entry : environment) {
    const auto equals = entry.find('=');
    setenv(entry.substr(0, equals).c_str(), entry.substr(equals + 1).c_str(), 1);
  }
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  execv(program.c_str(), argv.data());
  _exit(127);
}

void drain(int descriptor, std::string& text, bool& open) {
  std::array<char, 65536> bytes;
  const ssize_t count = read(descriptor, bytes.data(), bytes.size());
  if (count > 0) {
    text.append(bytes.data(), static_cast<std::size_t>(count));
  } else {
    open = false;
  }
}

}  // namespace

ProcessResult runProcess(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& folder, const std::vector<std::string>& environment, int seconds) {
  auto out = makePipe(true);
  auto err = makePipe(true);
  if (!out || !err) throw std::runtime_error("no pipe");
  const pid_t child = fork();
  if (child == 0) becomeProgram(program, arguments, folder, environment, out->writable.get(), err->writable.get());
  out->writable.reset();
  err->writable.reset();

  ProcessResult result;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  bool outOpen = true;
  bool errOpen = true;
  while (outOpen || errOpen) {
    if (std::chrono::steady_clock::now() > deadline) {
      kill(child, SIGKILL);
      result.errors += "[killed: took too long]";
      break;
    }
    std::array<pollfd, 2> ready{pollfd{outOpen ? out->readable.get() : -1, POLLIN, 0},
                                pollfd{errOpen ? err->readable.get() : -1, POLLIN, 0}};
    poll(ready.data(), ready.size(), 200);
    if (ready[0].revents != 0) drain(out->readable.get(), result.output, outOpen);
    if (ready[1].revents != 0) drain(err->readable.get(), result.errors, errOpen);
  }
  out.reset();
  err.reset();
  int status = 0;
  waitpid(child, &status, 0);
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
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
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
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
