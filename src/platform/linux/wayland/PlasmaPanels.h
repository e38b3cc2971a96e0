#pragma once

#include <QDBusConnection>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "platform/linux/bus/BusService.h"
#include "platform/linux/screens/ScreenDescription.h"
#include "platform/linux/wayland/CompositorQuestions.h"

namespace veloria {

/// Follows the panels of plasmashell, which alone knows where they are on a Wayland desktop: KWin doesn't say. Asked
/// over the session bus, by its scripting interface. Main thread; never waits.
class PlasmaPanels {
 public:
  /// `changed` is called when the answer has changed.
  PlasmaPanels(QDBusConnection bus, std::function<void()> changed);

  /// Asks again: a panel may have moved.
  void read();
  /// By the last answer; nothing before the first one, and while plasmashell doesn't run.
  std::optional<ReservedEdges> reservedEdges(std::span<const MonitorDescription> monitors) const;

 private:
  void hear(const QDBusMessage& reply);
  void forget();

  std::function<void()> changed_;
  std::optional<std::string> answer_;
  BusReader* reader_ = nullptr;
  std::unique_ptr<ServiceRuns> runs_;
};

}  // namespace veloria
