#include "ui/cards/LoginItemCard.h"

#include "ui/QtText.h"
#include "ui/controls/SettingLabel.h"

namespace veloria {

LoginItemCard::LoginItemCard(LoginItem& item, QWidget* parent)
    : Card(tr("Start"), parent), item_(item), box_(new QCheckBox(this)), error_(makeSentence({}, this)) {
  body().addLayout(makeButtonRow(*box_, tr("Start at login"), tr("Veloria starts with your desktop."), *this));
  body().addWidget(error_);
  connect(box_, &QCheckBox::clicked, this, &LoginItemCard::set);
}

void LoginItemCard::showEvent(QShowEvent* event) {
  Card::showEvent(event);
  box_->setChecked(item_.isEnabled());
}

void LoginItemCard::set(bool on) {
  const auto changed = item_.set(on);
  const bool is = item_.isEnabled();
  box_->setChecked(is);
  if (is == on) return setSentence(*error_, {});
  setSentence(*error_, changed ? tr("Couldn't change this.")
                               : breakable(tr("Couldn't change this: %1").arg(toQString(changed.error()))));
}

}  // namespace veloria
