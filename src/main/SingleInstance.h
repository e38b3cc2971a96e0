#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "app/RemoteControl.h"
#include "base/Environment.h"
#include "platform/posix/socket/InstanceLock.h"
#include "platform/posix/socket/LocalServer.h"
#include "ports/Timer.h"

namespace veloria {

/// Sees to it that a user has one running application, and that this one can be asked. Where that can't be had it says
/// so and lets the application run: better two than none. Main thread.
class SingleInstance {
 public:
  /// Becomes the one, unless another runs.
  explicit SingleInstance(const Environment& environment);

  bool otherRuns() const { return otherRuns_; }
  /// Brings up the settings of the other one; the exit code.
  int greetTheOther() const;

  /// Answers questions until what it returns is let go; null where that can't be done. What it is given must outlive
  /// that. Needs an event loop.
  std::unique_ptr<LocalServer> listen(TimerFactory& timers, RemoteControl& remote) const;

 private:
  std::optional<std::filesystem::path> socket_;
  bool otherRuns_ = false;
  std::optional<InstanceLock> lock_;
};

}  // namespace veloria
