#pragma once

#include "base/Log.h"
#include "base/Result.h"
#include "ports/SystemPort.h"

namespace veloria {

/// Whether this program is started when the user logs in. Main thread.
class LoginItem {
 public:
  /// The port must outlive this object.
  explicit LoginItem(LoginItemPort& port) : port_(port) {}

  bool isEnabled() { return port_.isRegistered(); }
  /// The error, a text for people, also goes to the system log.
  Result<Done> set(bool enabled) {
    Result<Done> changed = enabled ? port_.add() : port_.remove();
    if (!changed) systemLog("Veloria: login item change failed: " + changed.error());
    return changed;
  }

 private:
  LoginItemPort& port_;
};

}  // namespace veloria
