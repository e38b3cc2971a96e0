#include "ui/cards/LoginItemCard.h"

#include <utility>

#include "ui/QtText.h"
#include "ui/controls/ButtonRow.h"

namespace veloria {

LoginItemCard::LoginItemCard(LoginItemPorts ports, QWidget* parent)
    : Card(tr("Start"), parent), ports_(std::move(ports)), box_(new QCheckBox(this)), error_(makeSentence({}, this)) {
  body().addLayout(makeButtonRow(*box_, tr("Start at login"), tr("Veloria starts with your desktop."), *this));
  body().addWidget(error_);
  connect(box_, &QCheckBox::clicked, this, &LoginItemCard::set);
}

void LoginItemCard::showEvent(QShowEvent* event) {
  Card::showEvent(event);
  box_->setChecked(ports_.isEnabled());
}

void LoginItemCard::set(bool on) {
  const QString reason = toQString(ports_.set(on));
  const bool is = ports_.isEnabled();
  box_->setChecked(is);
  if (is == on) return setSentence(*error_, {});
  setSentence(*error_, breakable(reason.isEmpty() ? tr("This could not be changed.")
                                                  : tr("This could not be changed: %1").arg(reason)));
}

}  // namespace veloria
