#pragma once

#include "ui/cards/Card.h"

namespace veloria {

/// Explains how programs drive the band.
class AgentCard : public Card {
  Q_OBJECT

 public:
  explicit AgentCard(QWidget* parent = nullptr);
};

}  // namespace veloria
