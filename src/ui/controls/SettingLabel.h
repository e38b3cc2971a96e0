#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QLayout>

namespace veloria {

/// A wrapping label of a control that can be clicked in its stead.
class SettingLabel : public QLabel {
  Q_OBJECT

 public:
  enum class Tone {
    title,
    help,  ///< smaller and dimmer, in the colours of whichever palette is set
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

/// A check box or radio button without a text of its own, and beside it a title and a help, which wrap. Clicking on
/// them clicks the button. The labels become children of `parent`.
QLayout* makeButtonRow(QAbstractButton& button, const QString& title, const QString& help, QWidget& parent);

}  // namespace veloria
