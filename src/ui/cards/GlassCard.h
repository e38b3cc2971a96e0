#pragma once

#include "settings/SettingsEditor.h"
#include "ui/cards/Card.h"

namespace veloria {

/// Adjusts the current look for a translucent bar.
class GlassCard : public Card {
  Q_OBJECT

 public:
  /// The editor must outlive it.
  explicit GlassCard(SettingsEditor& editor, QWidget* parent = nullptr);
};

}  // namespace veloria
