#pragma once

#include <optional>
#include <string>
#include <vector>

namespace veloria {

/// What choosing an item does.
enum class MenuAction {
  none,
  toggleEnabled,
  choosePreset,   ///< the item's value is a preset's name
  choosePalette,  ///< the item's value is a palette's name
  choosePointer,  ///< the item's value is a pointer mode's raw value
  openSettings,
  restartSim,
  quit,
};

/// One line of a menu, as a plain value. An item with a submenu does nothing itself.
struct MenuItem {
  std::string title;  ///< plain text, empty for a separator
  bool separator = false;
  bool enabled = true;
  std::optional<bool> checked = std::nullopt;  ///< nothing: it can't be checked
  std::string keyEquivalent = {};              ///< one character, with the platform's menu modifier; empty: none
  MenuAction action = MenuAction::none;
  std::string value = {};
  std::vector<MenuItem> submenu = {};
  bool operator==(const MenuItem&) const = default;
};

using Menu = std::vector<MenuItem>;

/// How the status item was clicked.
enum class Click {
  primary,    ///< any click that isn't secondary
  secondary,  ///< the right mouse button, or the desktop's equivalent
  unknown,    ///< the desktop doesn't say which
};

}  // namespace veloria
