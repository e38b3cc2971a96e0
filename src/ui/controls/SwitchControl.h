#pragma once

#include <QCheckBox>

#include "ui/controls/SettingControl.h"

namespace veloria {

/// A check box; its title, which wraps, and its help stand beside it.
class SwitchControl : public SettingControl {
  Q_OBJECT

 public:
  SwitchControl(const Setting& setting, SettingsEditor& editor, QWidget* parent);

 protected:
  void showConfig(const NimbraConfig& config) override;

 private:
  QCheckBox* box_;
};

}  // namespace veloria
