#pragma once

#include <functional>
#include <memory>

#include "base/Environment.h"
#include "ports/SystemPort.h"

namespace veloria {

/// The settings of a Linux desktop:
///
/// - reduced transparency: as `transparencyReduced` says (on X11: no compositor runs);
/// - increased contrast: what the desktop portal says (its common setting or GNOME's high contrast), else GNOME's own
///   settings;
/// - glass tint: there is none;
/// - panes: the settings programs of GNOME, KDE, XFCE, Cinnamon and MATE, as XDG_CURRENT_DESKTOP names the desktop.
///
/// Services may be absent, come late, end, answer nonsense or not at all: what is not known is off. None is started by
/// being asked. Main thread, with a QCoreApplication that outlives it. Buses and programs are asked on a thread of its
/// own, so nothing waits but the destructor, should a bus have accepted a connection and not answered (half a minute at
/// most). Nothing runs by itself: without a call only a change that the portal tells of wakes it.
class LinuxSystem final : public SystemPort {
 public:
  struct Options {
    /// Read while constructing: DBUS_SESSION_BUS_ADDRESS, XDG_RUNTIME_DIR, XDG_CURRENT_DESKTOP, XDG_SESSION_DESKTOP,
    /// PATH.
    Environment environment;
    /// A plain read of something known, asked by facts(). Empty: never.
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
