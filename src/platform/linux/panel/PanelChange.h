#pragma once

#include <string>

#include "platform/linux/panel/PanelJournal.h"
#include "platform/linux/panel/PanelSettings.h"

namespace veloria {

/// What came of it, and how the panel is afterwards.
struct PanelOutcome {
  std::string problem;  ///< a sentence; empty: it is done
  std::string note;
  bool isClear = false;
  bool canRestore = false;
};

// Each blocks while the desktop does, and changes all that it should or nothing.

PanelOutcome lookAtPanel(PanelSettings& panel, const PanelJournal& journal);

/// Writes the values down before it changes them. What is written down already and still clear stays as it is there.
PanelOutcome clearPanel(PanelSettings& panel, const PanelJournal& journal);

/// Puts back what is written down and still as clearPanel() left it, then forgets all.
PanelOutcome restorePanel(PanelSettings& panel, const PanelJournal& journal);

}  // namespace veloria
