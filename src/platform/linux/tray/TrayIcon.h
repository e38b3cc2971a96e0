#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "base/Log.h"
#include "ports/StatusItem.h"

namespace veloria {

/// The status icon of a Linux desktop: a StatusNotifierItem on the session bus if a panel hosts those, else an icon in
/// the X server's system tray. It appears once either exists, which may be hours later, and keeps that kind. If neither
/// exists at the start, a log line says so once, and what to do instead.
///
/// Hosts of status notifiers show the menu themselves on a right click, and report neither the place of a click nor the
/// keys that were held. An X server knows both; on Wayland both are unknown, and showMenu() does nothing. The middle
/// button and the second click of a double click do nothing.
///
/// Main thread, with a QApplication that uses the session bus and must outlive it. The constructor waits for the bus,
/// but for no service on it.
class TrayIcon final : public StatusItem {
 public:
  explicit TrayIcon(std::function<void(std::string_view)> log = systemLog);
  ~TrayIcon() override;

  void setHandlers(Handlers handlers) override;
  void setMenu(const Menu& menu) override;
  void showMenu() override;
  std::optional<Rect> place() const override;

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace veloria
