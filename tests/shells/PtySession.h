#pragma once

#include <string>
#include <vector>

namespace veloria::tests {

/// A program on a terminal of its own; this object is its keyboard and its screen.
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
  const std::string& screen() const { return screen_; }
  void forget() { screen_.clear(); }

 private:
  int terminal_ = -1;
  int pid_ = -1;
  std::string screen_;
};

}  // namespace veloria::tests
