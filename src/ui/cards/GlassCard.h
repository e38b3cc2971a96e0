#pragma once

#include "settings/SettingsEditor.h"
#include "ui/cards/Card.h"

namespace veloria {

/// Retunes the current look for a bar of glass.
class GlassCard : public Card {
  Q_OBJECT

 public:
  /// The editor must outlive it.
  explicit GlassCard(SettingsEditor& editor, QWidget* parent = nullptr);
};

}  // namespace veloria
