#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "base/Log.h"
#include "ports/StatusItem.h"

namespace veloria {

/// The status icon of a Linux desktop: a StatusNotifierItem on the session bus where a panel hosts those, else an icon
/// in the X server's system tray. It appears when the first of them is there, which may be hours later, and stays with
/// that kind from then on. Where none is when it is made, that is logged once, with what to do instead.
///
/// Hosts of status notifiers show the menu themselves on a right click, and do not tell where a click was nor which
/// keys were held. On an X server both are asked of the server; on Wayland neither is known, and showMenu() does
/// nothing. The middle button and the second click of a double click do nothing.
///
/// Main thread, with a QApplication that uses the session bus and must outlive it. Waits for the bus itself when it is
/// made, but for no service on it.
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
