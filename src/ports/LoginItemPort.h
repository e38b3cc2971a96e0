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

}  // namespace veloria
