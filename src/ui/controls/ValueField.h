#pragma once

#include <QDoubleSpinBox>

#include "ui/controls/SettingCatalogue.h"

namespace veloria {

/// The number beside a slider, to be typed. It shows a value outside the range as it is, until a person changes it;
/// what is typed counts on Enter or when the focus leaves, Escape takes it back. The wheel counts only while it has the
/// focus.
class ValueField : public QDoubleSpinBox {
  Q_OBJECT

 public:
  ValueField(const NumberRange& range, QWidget* parent);

  /// Shows a value without moved(). Text that is being typed is left alone.
  void setShownValue(double value);

  QString textFromValue(double value) const override;
  QValidator::State validate(QString& text, int& position) const override;
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 Q_SIGNALS:
  /// A person changed it. May lie outside the range when the value did before.
  void moved(double value);

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  NumberRange range_;
};

}  // namespace veloria
