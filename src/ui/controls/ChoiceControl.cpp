#include "ui/controls/ChoiceControl.h"

#include <QHBoxLayout>
#include <QRadioButton>

#include "ui/controls/ButtonRow.h"
#include "ui/controls/SettingLabel.h"

namespace veloria {

ChoiceControl::ChoiceControl(const Setting& setting, SettingsEditor& editor, QWidget* parent)
    : SettingControl(setting, editor, parent), group_(new QButtonGroup(this)) {
  setAccessibleName(title());
  setAccessibleDescription(help());
  auto* head = new QHBoxLayout;
  head->addWidget(new SettingLabel(SettingLabel::Tone::title, title(), this), 1);
  head->addWidget(resetButton(), 0, Qt::AlignTop);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(6);
  column->addLayout(head);
  QWidget* last = nullptr;
  for (const Choice& choice : SettingCatalogue::choices(setting)) {
    auto* button = new QRadioButton(this);
    group_->addButton(button, static_cast<int>(group_->buttons().size()));
    column->addLayout(
        makeButtonRow(*button, SettingCatalogue::tr(choice.title), SettingCatalogue::tr(choice.help), *this));
    if (last != nullptr) setTabOrder(last, button);
    last = button;
  }
  setTabOrder(last, resetButton());
  setFocusProxy(group_->button(0));
  connect(group_, &QButtonGroup::idToggled, this, [this](int index, bool on) {
    if (on && index != static_cast<int>(currentValue())) write(index);
  });
}

void ChoiceControl::showConfig(const NimbraConfig& config) {
  QAbstractButton* button = group_->button(static_cast<int>(valueIn(config, setting())));
  if (button == nullptr) return;
  setFocusProxy(button);
  button->setChecked(true);
}

}  // namespace veloria
