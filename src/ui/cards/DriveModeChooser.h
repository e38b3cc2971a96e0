#pragma once

#include <QButtonGroup>
#include <QString>

#include "settings/SettingsEditor.h"
#include "ui/cards/Card.h"

namespace veloria {

/// What people call a drive mode.
QString driveModeTitle(Visualizer mode);

/// The drive modes to choose from, each with a line about it.
class DriveModeChooser : public Card {
  Q_OBJECT

 public:
  /// The editor must outlive it.
  explicit DriveModeChooser(SettingsEditor& editor, QWidget* parent = nullptr);

 private:
  void addMode(Visualizer mode);

  SettingsEditor& editor_;
  QButtonGroup* modes_;
  Subscription subscription_;
};

}  // namespace veloria
