#pragma once

#include <QButtonGroup>

#include "settings/SettingsEditor.h"
#include "ui/cards/Card.h"

namespace veloria {

/// The edge of the screen that the band is at.
class EdgeCard : public Card {
  Q_OBJECT

 public:
  /// The editor must outlive it.
  explicit EdgeCard(SettingsEditor& editor, QWidget* parent = nullptr);

 private:
  SettingsEditor& editor_;
  QButtonGroup group_;
  Subscription subscription_;
};

}  // namespace veloria
