#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QLayout>

namespace veloria {

/// A wrapping label that can be clicked instead of its control.
class SettingLabel : public QLabel {
  Q_OBJECT

 public:
  enum class Tone {
    title,
    help,  ///< smaller and dimmer, following the palette
  };
  SettingLabel(Tone tone, const QString& text, QWidget* parent);

 Q_SIGNALS:
  void clicked();
  void doubleClicked();

 protected:
  void changeEvent(QEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  void setTone();

  Tone tone_;
  bool settingTone_ = false;
};

/// Lays out a check box or radio button that has no text, with a wrapping title and help beside it. Clicking a label
/// clicks the button. The labels become children of `parent`.
QLayout* makeButtonRow(QAbstractButton& button, const QString& title, const QString& help, QWidget& parent);

}  // namespace veloria
