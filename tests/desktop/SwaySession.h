#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "desktop/ChildProcess.h"
#include "desktop/Screenshot.h"

namespace veloria::desktop {

/// A private Wayland desktop for tests: sway without a display, with its own wallpaper program and panel, all real
/// programs. Everything ends with this object.
///
///     if (const auto missing = SwaySession::missing(); !missing.empty()) GTEST_SKIP() << missing;
///     SwaySession desktop({.outputs = 2, .configuration = "output HEADLESS-2 scale 2\n"});
///     const auto program = desktop.run({"/path/of/program"}, {{"NIMBRA_LAYER", "aboveMenuBar"}});
///     EXPECT_EQ(desktop.screenshot("HEADLESS-1").at(960, 16), ...);
///
/// sway refuses to run as root, so there it runs as nobody; the programs of run() keep the test's own user.
class SwaySession {
 public:
  struct Options {
    int outputs = 1;            ///< HEADLESS-1, HEADLESS-2 and so on
    std::string configuration;  ///< lines of sway's configuration
  };

  /// A sentence that names what is missing for such sessions; empty when nothing is.
  static std::string missing(const std::vector<std::string>& more = {});

  /// Throws std::runtime_error, with what sway wrote, when it does not start.
  explicit SwaySession(const Options& options);
  ~SwaySession();
  SwaySession(const SwaySession&) = delete;
  SwaySession& operator=(const SwaySession&) = delete;

  const std::filesystem::path& folder() const { return folder_; }
  /// WAYLAND_DISPLAY, SWAYSOCK, HOME and the XDG folders, the last ones not sway's but the test's own.
  const std::map<std::string, std::string>& environment() const { return environment_; }

  std::unique_ptr<ChildProcess> run(const std::vector<std::string>& argv,
                                    const std::map<std::string, std::string>& environment = {});
  /// Sends a command to sway, or a request ({"-t", "get_tree"}), and returns the answer. Throws std::runtime_error when
  /// sway refuses.
  std::string message(const std::vector<std::string>& words) const;
  /// What an output shows, in its own pixels.
  Screenshot screenshot(const std::string& output = "HEADLESS-1") const;
  bool waitUntil(const std::function<bool()>& condition, double seconds = 20) const { return poll(seconds, condition); }
  /// Ends sway without a warning.
  void kill();

 private:
  void makeFolder(const std::string& configuration);
  void start(int outputs);

  std::filesystem::path folder_;
  std::map<std::string, std::string> environment_;
  int runs_ = 0;
  std::unique_ptr<ChildProcess> sway_;
};

}  // namespace veloria::desktop
