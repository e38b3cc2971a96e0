#pragma once

#include <QCheckBox>

#include "system/LoginItem.h"
#include "ui/cards/Card.h"

namespace veloria {

/// Whether Veloria starts at login.
class LoginItemCard : public Card {
  Q_OBJECT

 public:
  /// `item` must outlive the card.
  explicit LoginItemCard(LoginItem& item, QWidget* parent = nullptr);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void set(bool on);

  LoginItem& item_;
  QCheckBox* box_;
  QLabel* error_;
};

}  // namespace veloria
