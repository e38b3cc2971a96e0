#pragma once

#include <gmock/gmock.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QThreadPool>
#include <string>

#include "../support/MemoryStorage.h"
#include "settings/SettingsEditor.h"

namespace veloria::tests {

/// Lets the event loop run until the condition holds; false when it never did.
template <typename Condition>
bool runUntil(Condition condition, int milliseconds = 20000) {
  return QTest::qWaitFor(condition, milliseconds);
}

/// A settings store with an editor, whose clock stands until it is moved, and widgets found by their object names.
class UiFixture : public testing::Test {
 protected:
  const NimbraConfig& config() const { return store_.config(); }

  template <typename W>
  static W& child(const QWidget& parent, const char* name) {
    W* found = parent.findChild<W*>(QString::fromUtf8(name));
    if (found == nullptr) throw std::runtime_error(std::string("there is no ") + name);
    return *found;
  }

  /// All sentences that a person can read on it.
  static QString sentences(const QWidget& widget) {
    QString all;
    for (const QLabel* label : widget.findChildren<QLabel*>()) {
      if (label->isVisible()) all += label->text() + QLatin1Char('\n');
    }
    return all.remove(QChar(0x200B));
  }

  static void type(QLineEdit& field, const QString& text) {
    field.setFocus();
    field.selectAll();
    QTest::keyClick(&field, Qt::Key_Delete);
    QTest::keyClicks(&field, text);
  }

  double now_ = 100;
  SettingsStore store_{std::make_unique<MemoryStorage>(), emptyEnvironment};
  SettingsEditor editor_{store_, [this] { return now_; }};
};

}  // namespace veloria::tests
