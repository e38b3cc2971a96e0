#pragma once

#include <QPushButton>
#include <functional>
#include <string>

#include "system/SystemPort.h"
#include "ui/Card.h"
#include "ui/ReadoutTicker.h"

namespace veloria {

/// Asked on the main thread: `facts` a few times a second while the window is open, the others when a person wants to
/// change that setting. These open the system's own window for it and return why they could not, or nothing; one that
/// is not set has no button.
struct SystemFactsPorts {
  std::function<SystemFacts()> facts;
  std::function<std::string()> openTransparency;
  std::function<std::string()> openContrast;
};

/// Says how those settings are, and leads to them.
class SystemFactsCard : public Card {
  Q_OBJECT

 public:
  SystemFactsCard(SystemFactsPorts ports, ReadoutTicker& ticker, QWidget* parent = nullptr);

 private:
  QLabel* addFact(const QString& buttonText, const QString& buttonName, const std::function<std::string()>& open);
  void showFacts();

  SystemFactsPorts ports_;
  QLabel* transparency_;
  QLabel* contrast_;
  QLabel* error_;
  Subscription subscription_;
};

}  // namespace veloria
