#pragma once

#include <gmock/gmock.h>

#include <QTest>
#include <string>
#include <vector>

#include "SettingsFixture.h"
#include "ui/controls/SettingControl.h"
#include "ui/controls/SettingSlider.h"
#include "ui/controls/ValueField.h"
#include "ui/window/SettingsWindow.h"

namespace veloria {

/// A settings window that is shown and active, over a store of its own.
class SettingsWindowTest : public testing::Test {
 protected:
  void open(const NimbraConfig& config = {}) {
    settings.store.setConfig(config);
    window = std::make_unique<SettingsWindow>(settings.editor);
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
  }

  /// The control of a setting, on its tab, scrolled to.
  SettingControl& control(const Setting& setting) {
    window->showTab(setting.tab);
    QTest::qWait(0);
    return shown(setting.key);
  }
  SettingControl& control(std::string_view key) { return control(*SettingCatalogue::find(key)); }

  /// The one that can be seen now.
  SettingControl& shown(std::string_view key) {
    for (SettingControl* control : window->findChildren<SettingControl*>()) {
      if (control->setting().key == key && control->isVisible()) {
        scrollTo(*control);
        return *control;
      }
    }
    throw std::runtime_error("no control of " + std::string(key) + " is seen");
  }

  std::vector<std::string> shownKeys() {
    std::vector<std::string> keys;
    for (const Setting& setting : SettingCatalogue::all()) {
      for (const SettingControl* control : window->findChildren<SettingControl*>()) {
        if (&control->setting() == &setting && control->isVisible()) keys.emplace_back(setting.key);
      }
    }
    return keys;
  }

  static SettingSlider& slider(SettingControl& control) { return *control.findChild<SettingSlider*>(); }
  static ValueField& field(SettingControl& control) { return *control.findChild<ValueField*>(); }

  static void scrollTo(QWidget& widget) {
    for (QWidget* up = widget.parentWidget(); up != nullptr; up = up->parentWidget()) {
      if (auto* page = qobject_cast<QScrollArea*>(up)) page->ensureWidgetVisible(&widget);
    }
  }

  static void key(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(&widget, key, modifiers);
  }

  const NimbraConfig& config() const { return settings.store.config(); }

  EditedSettings settings;
  std::unique_ptr<SettingsWindow> window;
};

}  // namespace veloria
