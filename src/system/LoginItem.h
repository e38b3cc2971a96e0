#pragma once

#include "base/Result.h"

namespace veloria {

/// What the desktop starts when the user logs in. Main thread; short waits for the disk only.
class LoginItemPort {
 public:
  virtual ~LoginItemPort() = default;
  LoginItemPort(const LoginItemPort&) = delete;
  LoginItemPort& operator=(const LoginItemPort&) = delete;

  virtual bool isRegistered() = 0;
  /// Doing what is done already succeeds. The error is a text for a person.
  virtual Result<Done> add() = 0;
  virtual Result<Done> remove() = 0;

 protected:
  LoginItemPort() = default;
};

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
