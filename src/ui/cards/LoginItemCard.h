#pragma once

#include <QCheckBox>
#include <functional>
#include <string>

#include "ui/cards/Card.h"

namespace veloria {

/// Asked and told on the main thread. `set` returns why it could not be done, or nothing.
struct LoginItemPorts {
  std::function<bool()> isEnabled;
  std::function<std::string(bool)> set;
};

/// Whether Veloria starts when the person logs in.
class LoginItemCard : public Card {
  Q_OBJECT

 public:
  explicit LoginItemCard(LoginItemPorts ports, QWidget* parent = nullptr);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void set(bool on);

  LoginItemPorts ports_;
  QCheckBox* box_;
  QLabel* error_;
};

}  // namespace veloria
