#include "ui/controls/SwitchControl.h"

#include <QHBoxLayout>

#include "ui/controls/ButtonRow.h"

namespace veloria {

SwitchControl::SwitchControl(const Setting& setting, SettingsEditor& editor, QWidget* parent)
    : SettingControl(setting, editor, parent), box_(new QCheckBox(this)) {
  auto* line = new QHBoxLayout(this);
  line->setContentsMargins(0, 0, 0, 0);
  line->setSpacing(6);
  line->addLayout(makeButtonRow(*box_, title(), help(), *this), 1);
  line->addWidget(resetButton(), 0, Qt::AlignTop);
  setFocusProxy(box_);
  setTabOrder(box_, resetButton());
  connect(box_, &QCheckBox::clicked, this, [this](bool on) { write(on ? 1 : 0); });
}

void SwitchControl::showConfig(const NimbraConfig& config) {
  box_->setChecked(valueIn(config, setting()) != 0);
}

}  // namespace veloria
