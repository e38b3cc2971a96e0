#pragma once

#include <functional>
#include <memory>

#include "base/Environment.h"
#include "ports/SystemPort.h"

namespace veloria {

/// The settings of a Linux desktop:
///
/// - reduced transparency: `transparencyReduced` (on X11: no compositor runs);
/// - increased contrast: from the desktop portal (its common setting or GNOME's high contrast), else from GNOME's own
///   settings;
/// - glass tint: none;
/// - panes: the settings programs of GNOME, KDE, XFCE, Cinnamon and MATE, chosen by XDG_CURRENT_DESKTOP.
///
/// Services may be absent, start late, end, send nonsense or not answer. Unknown counts as off, and a query starts no
/// service. Main thread, with a QCoreApplication that outlives it. Buses and programs are queried on a thread of their
/// own. Only the destructor can wait, half a minute at most, if a bus has accepted a connection and not answered. Idle
/// without calls, but for changes that the portal reports.
class LinuxSystem final : public SystemPort {
 public:
  struct Options {
    /// Read while constructing: DBUS_SESSION_BUS_ADDRESS, XDG_RUNTIME_DIR, XDG_CURRENT_DESKTOP, XDG_SESSION_DESKTOP,
    /// PATH.
    Environment environment;
    /// Called by facts(); must return at once. Empty: never reduced.
    std::function<bool()> transparencyReduced = {};
  };

  explicit LinuxSystem(Options options);
  ~LinuxSystem() override;

  SystemFacts facts() override;
  void setChangeHandler(std::function<void()> handler) override;
  Result<Done> open(SystemPane pane) override;

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace veloria
