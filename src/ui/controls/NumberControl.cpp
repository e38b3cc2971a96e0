#include "ui/controls/NumberControl.h"

#include <QHBoxLayout>

#include "ui/controls/SettingLabel.h"
#include "ui/controls/SettingSlider.h"
#include "ui/controls/ValueField.h"

namespace veloria {

NumberControl::NumberControl(const Setting& setting, SettingsEditor& editor, QWidget* parent)
    : SettingControl(setting, editor, parent),
      slider_(new SettingSlider(setting.range, this)),
      field_(new ValueField(setting.range, this)) {
  auto* name = new SettingLabel(SettingLabel::Tone::title, title(), this);
  auto* description = new SettingLabel(SettingLabel::Tone::help, help(), this);
  name->setBuddy(slider_);
  for (QWidget* part : {static_cast<QWidget*>(slider_), static_cast<QWidget*>(field_)}) {
    part->setAccessibleName(title());
    part->setAccessibleDescription(help());
  }
  setFocusProxy(slider_);
  setTabOrder(slider_, field_);
  setTabOrder(field_, resetButton());

  auto* line = new QHBoxLayout;
  line->addWidget(slider_, 1);
  line->addWidget(field_);
  line->addWidget(resetButton());
  line->setSpacing(6);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(1);
  column->addWidget(name);
  column->addWidget(description);
  column->addLayout(line);

  connect(slider_, &SettingSlider::moved, this, &NumberControl::write);
  connect(field_, &ValueField::moved, this, &NumberControl::write);
  connect(slider_, &SettingSlider::defaultWanted, this, &NumberControl::writeDefault);
  connect(name, &SettingLabel::doubleClicked, this, &NumberControl::writeDefault);
}

void NumberControl::showConfig(const NimbraConfig& config) {
  const double value = valueIn(config, setting());
  slider_->setShownValue(value);
  field_->setShownValue(value);
}

}  // namespace veloria
