#pragma once

#include <QButtonGroup>

#include "ui/controls/SettingControl.h"

namespace veloria {

/// A title, below it a radio button with a help for each choice.
class ChoiceControl : public SettingControl {
  Q_OBJECT

 public:
  ChoiceControl(const Setting& setting, SettingsEditor& editor, QWidget* parent);

 protected:
  void showConfig(const NimbraConfig& config) override;

 private:
  QButtonGroup* group_;
};

}  // namespace veloria
