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
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
}

void PtySession::type(const std::string& keys) const {
  if (write(terminal_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    throw std::runtime_error("the terminal takes no keys");
  }
}

bool PtySession::waitFor(const std::string& text) {
  const double end = mediaTime() + 20;
  while (screen_.find(text) == std::string::npos && mediaTime() < end) {
    pollfd ready{terminal_, POLLIN, 0};
    if (poll(&ready, 1, 100) <= 0) continue;
    std::array<char, 4096> bytes;
    const ssize_t count = read(terminal_, bytes.data(), bytes.size());
    if (count <= 0) break;
    screen_.append(bytes.data(), static_cast<std::size_t>(count));
  }
  return screen_.find(text) != std::string::npos;
}

}  // namespace veloria::tests
