#pragma once

#include <QPushButton>
#include <functional>
#include <string>

#include "ports/SystemPort.h"
#include "ui/Card.h"
#include "ui/ReadoutTicker.h"

namespace veloria {

/// Asked on the main thread.
struct SystemFactsPorts {
  /// Asked a few times a second while the window is open.
  std::function<SystemFacts()> facts;
  /// Opens a pane of the system's settings for the person; returns why it could not, or nothing.
  std::function<std::string(SystemPane)> open;
  SystemPane transparencyPane = SystemPane::appearance;  ///< which one has transparency
  bool tintsGlass = false;                               ///< whether the system has that setting
};

/// Says how those settings are, and leads to them and to the other two that decide what is seen of the band.
class SystemFactsCard : public Card {
  Q_OBJECT

 public:
  SystemFactsCard(SystemFactsPorts ports, ReadoutTicker& ticker, QWidget* parent = nullptr);

 private:
  QLabel* addFact();
  void addButton(const QString& text, const char* name, SystemPane pane);
  void showFacts();

  SystemFactsPorts ports_;
  QLabel* transparency_;
  QLabel* contrast_;
  QLabel* tint_ = nullptr;
  QLabel* error_;
  Subscription subscription_;
};

}  // namespace veloria
