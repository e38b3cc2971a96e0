#include "platform/linux/bus/BusAddresses.h"

namespace veloria {

namespace {

constexpr const char* wellKnownSystemBus = "unix:path=/var/run/dbus/system_bus_socket";

std::string unlessItLaunches(const std::string& address) {
  return address.find("autolaunch:") == std::string::npos ? address : std::string();
}

std::string valueOf(const Environment& environment, std::string_view name) {
  return environment(name).value_or(std::string());
}

}  // namespace

BusAddresses busAddresses(const Environment& environment) {
  std::string system = valueOf(environment, "DBUS_SYSTEM_BUS_ADDRESS");
  std::string session = valueOf(environment, "DBUS_SESSION_BUS_ADDRESS");
  if (system.empty()) system = wellKnownSystemBus;
  const std::string runtime = valueOf(environment, "XDG_RUNTIME_DIR");
  if (session.empty() && !runtime.empty()) session = "unix:path=" + runtime + "/bus";
  return {unlessItLaunches(system), unlessItLaunches(session)};
}

}  // namespace veloria
