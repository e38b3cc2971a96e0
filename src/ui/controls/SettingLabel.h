#pragma once

#include <QLabel>

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

}  // namespace veloria
