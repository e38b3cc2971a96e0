#include "PtySession.h"

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

#include "base/MediaClock.h"

namespace veloria::tests {

constexpr double patience = 20;

PtySession::PtySession(const std::vector<std::string>& argv, const std::vector<std::string>& environment) {
  std::vector<char*> pointers;
  for (const auto& text : argv) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  winsize size{40, 120, 0, 0};
  pid_ = forkpty(&terminal_, nullptr, nullptr, &size);
  if (pid_ < 0) throw std::runtime_error("no terminal");
  if (pid_ > 0) return;
  for (const auto& entry : environment) putenv(const_cast<char*>(entry.c_str()));
  execvp(pointers[0], pointers.data());
  _exit(127);
}

PtySession::~PtySession() {
  close(terminal_);  // hangs up
  if (pid_ < 0) return;
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
}

void PtySession::type(const std::string& keys) const {
  if (write(terminal_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    throw std::runtime_error("the terminal takes no keys");
  }
}

/// False once the program has ended.
bool PtySession::readSome() {
  pollfd ready{terminal_, POLLIN, 0};
  if (poll(&ready, 1, 100) <= 0) return true;
  std::array<char, 4096> bytes;
  const ssize_t count = read(terminal_, bytes.data(), bytes.size());
  if (count > 0) screen_.append(bytes.data(), static_cast<std::size_t>(count));
  return count > 0;
}

bool PtySession::waitFor(const std::string& text) {
  const double end = mediaTime() + patience;
  while (screen_.find(text) == std::string::npos) {
    if (mediaTime() > end || !readSome()) return screen_.find(text) != std::string::npos;
  }
  return true;
}

int PtySession::waitForEnd() {
  const double end = mediaTime() + patience;
  while (readSome()) {
    if (mediaTime() > end) return -1;
  }
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace veloria::tests
