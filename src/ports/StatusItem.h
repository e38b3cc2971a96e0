#pragma once

#include <functional>
#include <optional>

#include "base/Geometry.h"
#include "ports/Menu.h"

namespace veloria {

/// Port: the program's icon in the desktop's status area. Main thread.
class StatusItem {
 public:
  struct Handlers {
    std::function<void(Click click, bool controlHeld)> clicked;
    std::function<void(const MenuItem& item)> chosen;
  };

  virtual ~StatusItem() = default;
  /// Both may be called until the handlers are replaced; empty ones are not called.
  virtual void setHandlers(Handlers handlers) = 0;
  /// Replaces the menu. May be called from a handler.
  virtual void setMenu(const Menu& menu) = 0;
  /// Opens the menu, if the desktop lets programs do so.
  virtual void showMenu() = 0;
  /// The place of the icon, or of the last click if only that is known. In the platform's window coordinates (y down),
  /// for the SettingsPresenter of the same platform only.
  virtual std::optional<Rect> place() const = 0;
};

}  // namespace veloria
