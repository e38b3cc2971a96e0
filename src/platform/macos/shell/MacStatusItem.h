#pragma once

#include <memory>

#include "ports/StatusItem.h"

namespace veloria {

/// The program's icon in the menu bar. Main thread, after the application object is made.
class MacStatusItem final : public StatusItem {
 public:
  MacStatusItem();
  ~MacStatusItem() override;

  void setHandlers(Handlers handlers) override;
  void setMenu(const Menu& menu) override;
  /// Returns when the menu is closed.
  void showMenu() override;
  /// In points, y down from the top of the first screen.
  std::optional<Rect> place() const override;

  /// The icon's view (NSView), to which the popover is attached; lives as long as this.
  void* anchor() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace veloria
