#pragma once

#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "app/RemoteControl.h"
#include "base/Environment.h"
#include "platform/posix/socket/InstanceLock.h"
#include "platform/posix/socket/LocalServer.h"
#include "ports/EventLoop.h"

namespace veloria {

/// Asks the application that this user runs; see base/LocalSocket.h for questions and answers. Nothing when none runs.
/// Throws WorkError when it does not answer, or answers with anything but an object, or with an error.
std::optional<nlohmann::ordered_json> askRunningApplication(const std::string& question);

/// Makes sure that a user has one running application, which answers questions. If that fails it logs the reason and
/// lets the application run: better two than none. Main thread.
class SingleInstance {
 public:
  /// Becomes the one, unless another runs.
  explicit SingleInstance(const Environment& environment);

  bool otherRuns() const { return otherRuns_; }
  /// Opens the settings of the other one; the exit code.
  int greetTheOther() const;

  /// Answers questions until the returned object is destroyed; null if that fails. The arguments must outlive it. Needs
  /// an event loop.
  std::unique_ptr<LocalServer> listen(TimerFactory& timers, RemoteControl& remote) const;

 private:
  std::optional<std::filesystem::path> socket_;
  bool otherRuns_ = false;
  std::optional<InstanceLock> lock_;
};

}  // namespace veloria
