#pragma once

#include "base/Result.h"
#include "ports/LoginItemPort.h"

namespace veloria {

/// Whether this program is started when the user logs in. Main thread.
class LoginItem {
 public:
  /// The port must outlive this object.
  explicit LoginItem(LoginItemPort& port) : port_(port) {}

  bool isEnabled() { return port_.isRegistered(); }
  /// The error, a text for a person, is written to the system log as well.
  Result<Done> set(bool enabled);

 private:
  LoginItemPort& port_;
};

}  // namespace veloria
