#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace veloria::tests {

/// A program on a terminal of its own, which this object is the keyboard and the screen of.
class PtySession {
 public:
  /// `argv[0]` is looked up on the PATH. `environment` entries ("NAME=value") are added.
  PtySession(const std::vector<std::string>& argv, const std::vector<std::string>& environment);
  ~PtySession();
  PtySession(const PtySession&) = delete;
  PtySession& operator=(const PtySession&) = delete;

  void type(const std::string& keys) const;
  /// Reads until `text` has come (since the last forget()); false after 20 seconds or at the end.
  bool waitFor(const std::string& text);
  /// Reads what comes for the rest of its life; the exit code, 128 + n for signal n.
  int waitForEnd();
  const std::string& screen() const { return screen_; }
  void forget() { screen_.clear(); }

 private:
  bool readSome(int milliseconds);

  int terminal_ = -1;
  pid_t pid_ = -1;
  std::string screen_;
};

}  // namespace veloria::tests
