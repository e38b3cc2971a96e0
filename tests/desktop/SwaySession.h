#pragma once

#include "desktop/Session.h"

namespace veloria::tests {

/// A private Wayland desktop: sway without a display, with its own wallpaper program and panel.
/// sway refuses to run as root, so there it runs as nobody; the programs of run() keep the test's own user.
class SwaySession final : public Session {
 public:
  struct Options {
    int outputs = 1;            ///< HEADLESS-1, HEADLESS-2 and so on; with a host WL-1, WL-2
    std::string configuration;  ///< lines of sway's configuration
    /// Another one, whose windows are then this one's outputs: closing a window unplugs it, which sway 1.7 can't do to
    /// outputs that have neither window nor cable. It must outlive this.
    const SwaySession* host = nullptr;
  };

  /// Includes sway and its tools.
  static std::string missing(std::vector<std::string> programs = {});

  /// Throws std::runtime_error, with what sway wrote, if it does not start.
  explicit SwaySession(const Options& options);
  ~SwaySession() override;

  /// Sends a command to sway, or a request ({"-t", "get_tree"}), and returns the answer. Throws std::runtime_error if
  /// sway refuses.
  std::string message(const std::vector<std::string>& words) const;
  Screenshot screenshot(const std::string& output = {}) const override;
  /// To sway's process: SIGKILL ends it without a warning, SIGSTOP makes it a compositor that hangs.
  void signal(int number) { sway_->signal(number); }

 private:
  std::unique_ptr<ChildProcess> sway_;
};

}  // namespace veloria::tests
