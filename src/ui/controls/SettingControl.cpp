#include "ui/controls/SettingControl.h"

#include "ui/controls/ChoiceControl.h"
#include "ui/controls/GlyphButton.h"
#include "ui/controls/NumberControl.h"
#include "ui/controls/SwitchControl.h"

namespace veloria {

SettingControl::SettingControl(const Setting& setting, SettingsEditor& editor, QWidget* parent)
    : QWidget(parent), setting_(setting), editor_(editor), reset_(new GlyphButton(Glyph::toDefault, {}, this)) {
  setObjectName(QString::fromUtf8(setting.key.data(), static_cast<qsizetype>(setting.key.size())));
  reset_->setToolTip(tr("Back to the default"));
  reset_->setAccessibleName(tr("%1: back to the default").arg(title()));
  connect(reset_, &QToolButton::clicked, this, [this] {
    setFocus();  // the button is about to be disabled
    writeDefault();
  });
  subscription_ = editor_.subscribe([this](const NimbraConfig& config) {
    if (isVisible()) apply(config);
  });
}

void SettingControl::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  apply(editor_.config());
}

void SettingControl::apply(const NimbraConfig& config) {
  showConfig(config);
  reset_->setEnabled(!isDefault(config, setting_));
}

void SettingControl::write(double value) {
  editor_.change(setting_.key, [&](NimbraConfig& config) { setValue(config, setting_, value); });
  showConfig(editor_.config());
}

void SettingControl::writeDefault() {
  editor_.change(setting_.key, [&](NimbraConfig& config) { resetToDefault(config, setting_); });
}

QWidget* SettingControl::resetButton() {
  return reset_;
}

SettingControl* makeSettingControl(const Setting& setting, SettingsEditor& editor, QWidget* parent) {
  switch (kindOf(setting)) {
    case SettingKind::toggle:
      return new SwitchControl(setting, editor, parent);
    case SettingKind::number:
      return new NumberControl(setting, editor, parent);
    case SettingKind::choice:
      return new ChoiceControl(setting, editor, parent);
  }
  return nullptr;
}

}  // namespace veloria
