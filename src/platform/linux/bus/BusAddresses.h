#pragma once

#include <string>

#include "base/Environment.h"

namespace veloria {

/// Where the two message buses are, as D-Bus writes addresses; empty: there is none.
struct BusAddresses {
  std::string system;
  std::string session;
};

/// From DBUS_SYSTEM_BUS_ADDRESS (or the well-known place), and DBUS_SESSION_BUS_ADDRESS (or "bus" in XDG_RUNTIME_DIR).
/// An address that would start a bus ("autolaunch:") counts as none.
BusAddresses busAddresses(const Environment& environment);

}  // namespace veloria
