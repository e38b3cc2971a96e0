#pragma once

#include <QPushButton>

#include "system/SystemState.h"
#include "ui/cards/Card.h"

namespace veloria {

/// Which display settings a system has, and in which pane.
struct SystemPanes {
  SystemPane transparency = SystemPane::appearance;
  bool tintsGlass = false;
};

/// Shows the display settings that affect the band, and opens the desktop's own settings for them.
class SystemFactsCard : public Card {
  Q_OBJECT

 public:
  /// `system` must outlive the card.
  SystemFactsCard(SystemState& system, const SystemPanes& panes, QWidget* parent = nullptr);

 private:
  QLabel* addFact();
  void addButton(const QString& text, const char* name, SystemPane pane);
  void showFacts(const SystemFacts& facts);

  SystemState& system_;
  QLabel* transparency_;
  QLabel* contrast_;
  QLabel* tint_ = nullptr;
  QLabel* error_;
  Subscription subscription_;
};

}  // namespace veloria
