#pragma once

#include <QCheckBox>
#include <functional>

#include "ui/Card.h"

namespace veloria {

/// Asked and told on the main thread.
struct LoginItemPorts {
  std::function<bool()> isEnabled;
  std::function<void(bool)> set;
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
