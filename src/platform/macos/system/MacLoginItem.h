#pragma once

#include "ports/LoginItemPort.h"

namespace veloria {

/// This application among those that the Mac starts at login. Works for an application bundle only. Main thread.
class MacLoginItem final : public LoginItemPort {
 public:
  /// False too while the user has still to allow it, or has forbidden it.
  bool isRegistered() override;
  Result<Done> add() override;
  Result<Done> remove() override;
};

}  // namespace veloria
