#pragma once

#include <QButtonGroup>
#include <QString>

#include "settings/SettingsEditor.h"
#include "ui/cards/Card.h"

namespace veloria {

/// The name of a drive mode, for people.
QString driveModeTitle(Visualizer mode);

/// A choice of the drive modes, each with a description.
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
