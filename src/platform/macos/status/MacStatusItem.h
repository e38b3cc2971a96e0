#pragma once

#include <memory>

#include "ports/StatusItem.h"

namespace veloria {

/// The program's icon in the menu bar. Main thread, once there is an application object.
class MacStatusItem final : public StatusItem {
 public:
  MacStatusItem();
  ~MacStatusItem() override;

  void setHandlers(Handlers handlers) override;
  void setMenu(const Menu& menu) override;
  /// Comes back when the menu is closed again.
  void showMenu() override;
  /// In points, y down from the top of the first screen.
  std::optional<Rect> place() const override;

  /// The icon's view (NSView), for what is shown beside it; lives as long as this.
  void* anchor() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace veloria
