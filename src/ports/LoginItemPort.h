#pragma once

#include "base/Result.h"

namespace veloria {

/// Port: whether this program starts at login. Main thread; short waits for the disk only.
class LoginItemPort {
 public:
  virtual ~LoginItemPort() = default;
  LoginItemPort(const LoginItemPort&) = delete;
  LoginItemPort& operator=(const LoginItemPort&) = delete;

  virtual bool isRegistered() = 0;
  /// Repeating either succeeds. The error is a text for people.
  virtual Result<Done> add() = 0;
  virtual Result<Done> remove() = 0;

 protected:
  LoginItemPort() = default;
};

}  // namespace veloria
