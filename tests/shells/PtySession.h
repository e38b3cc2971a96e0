#pragma once

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/MediaClock.h"

namespace veloria::tests {

/// A program on a terminal of its own; this object is its keyboard and its screen.
class PtySession {
 public:
  /// `argv[0]` is looked up on the PATH. `environment` entries ("NAME=value") are added.
  PtySession(const std::vector<std::string>& argv, const std::vector<std::string>& environment) {
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
  ~PtySession() {
    close(terminal_);  // hangs up
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  PtySession(const PtySession&) = delete;
  PtySession& operator=(const PtySession&) = delete;

  void type(const std::string& keys) const {
    if (write(terminal_, keys.data(), keys.size()) < 0) throw std::runtime_error("the terminal takes no keys");
  }
  /// Reads until `text` has come (since the last forget()); false after 20 seconds or at the end.
  bool waitFor(const std::string& text) {
    const double end = mediaTime() + 20;
    while (screen_.find(text) == std::string::npos && mediaTime() < end) {
      pollfd ready{terminal_, POLLIN, 0};
      if (::poll(&ready, 1, 100) <= 0) continue;
      std::array<char, 4096> bytes;
      const ssize_t count = read(terminal_, bytes.data(), bytes.size());
      if (count <= 0) break;
      screen_.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return screen_.find(text) != std::string::npos;
  }
  const std::string& screen() const { return screen_; }
  void forget() { screen_.clear(); }

 private:
  int terminal_ = -1;
  pid_t pid_ = -1;
  std::string screen_;
};

}  // namespace veloria::tests
