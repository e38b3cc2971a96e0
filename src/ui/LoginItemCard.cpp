#include "ui/LoginItemCard.h"

#include <utility>

namespace veloria {

LoginItemCard::LoginItemCard(LoginItemPorts ports, QWidget* parent)
    : Card(tr("Start"), parent),
      ports_(std::move(ports)),
      box_(new QCheckBox(tr("Start when I log in"), this)),
      error_(makeSentence({}, this)) {
  body().addWidget(box_);
  body().addWidget(error_);
  connect(box_, &QCheckBox::clicked, this, &LoginItemCard::set);
}

void LoginItemCard::showEvent(QShowEvent* event) {
  Card::showEvent(event);
  box_->setChecked(ports_.isEnabled());
}

void LoginItemCard::set(bool on) {
  ports_.set(on);
  const bool is = ports_.isEnabled();
  box_->setChecked(is);
  setSentence(*error_, is == on ? QString() : tr("This could not be changed. The log says why."));
}

}  // namespace veloria
