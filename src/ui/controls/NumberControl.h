#pragma once

#include "ui/controls/SettingControl.h"

namespace veloria {

class SettingSlider;
class ValueField;

/// Title and help, below them a slider with its value.
class NumberControl : public SettingControl {
  Q_OBJECT

 public:
  NumberControl(const Setting& setting, SettingsEditor& editor, QWidget* parent);

 protected:
  void showConfig(const NimbraConfig& config) override;

 private:
  SettingSlider* slider_;
  ValueField* field_;
};

}  // namespace veloria
