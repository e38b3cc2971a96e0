#pragma once

#include <QWidget>

#include "settings/SettingsEditor.h"
#include "ui/controls/SettingValue.h"

namespace veloria {

class GlyphButton;

/// The control of one setting. While visible it shows the record's value, whoever changed it. It writes only what the
/// user does, through the editor. Main thread; the editor and the setting must outlive it.
class SettingControl : public QWidget {
  Q_OBJECT

 public:
  SettingControl(const Setting& setting, SettingsEditor& editor, QWidget* parent);

  const Setting& setting() const { return setting_; }

 protected:
  void showEvent(QShowEvent* event) override;
  virtual void showConfig(const NimbraConfig& config) = 0;

  QString title() const { return SettingCatalogue::tr(setting_.title); }
  QString help() const { return SettingCatalogue::tr(setting_.help); }
  double currentValue() const { return valueIn(editor_.config(), setting_); }
  void write(double value);
  void writeDefault();
  /// The button that restores the default.
  QWidget* resetButton();

 private:
  void apply(const NimbraConfig& config);

  const Setting& setting_;
  SettingsEditor& editor_;
  GlyphButton* reset_;
  Subscription subscription_;
};

/// Makes the control for a setting.
SettingControl* makeSettingControl(const Setting& setting, SettingsEditor& editor, QWidget* parent);

}  // namespace veloria
