#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Process.h"
#include "desktop/ChildProcess.h"
#include "desktop/DesktopSession.h"
#include "settings/NimbraConfig.h"

namespace veloria::desktop {

constexpr int barHeight = 32;

constexpr Region strip{0, 0, 1920, barHeight};
constexpr Region belowStrip{0, barHeight + 4, 1920, 60};

/// The program itself on a private desktop with a real window manager, panel and compositor.
class EndToEnd : public testing::Test {
 protected:
  /// Skips the test where a desktop can't be had: return when IsSkipped().
  void startDesktop(const DesktopSession::Options& options = {});
  /// Starts the program with settings that differ from the defaults by `edit`, and waits for its window.
  void startVeloria(const std::function<void(NimbraConfig&)>& edit,
                    const std::map<std::string, std::string>& environment = {});
  bool waitForLight(const Region& region, double share = 0.1);
  std::size_t bands() const;
  /// What the program has written, but for the line that no panel of these tests shows status icons.
  std::string complaints() const;
  double residentMiB() const;
  /// Runs another program of this user to its end.
  tests::ProcessResult runBeside(const std::string& program, const std::vector<std::string>& arguments) const;

  std::unique_ptr<DesktopSession> desktop_;
  std::unique_ptr<ChildProcess> veloria_;
};

}  // namespace veloria::desktop
