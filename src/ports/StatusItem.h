#pragma once

#include <functional>
#include <optional>

#include "base/Geometry.h"
#include "ports/Menu.h"

namespace veloria {

/// Port: the program's icon among those that the desktop's panel shows. Main thread.
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
  /// Opens the menu, where the desktop lets a program do so.
  virtual void showMenu() = 0;
  /// Where the icon is, or, where only that is known, the spot that was clicked last. In the coordinates in which the
  /// platform places windows, top-down: for the SettingsPresenter, which is of the same platform, and nobody else.
  virtual std::optional<Rect> place() const = 0;
};

}  // namespace veloria
