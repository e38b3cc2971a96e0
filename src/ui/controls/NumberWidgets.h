#pragma once

#include <QDoubleSpinBox>
#include <QSlider>

#include "ui/controls/SettingCatalogue.h"

namespace veloria {

/// The value after a key: arrows move it by a fiftieth of the travel, or with Shift or Ctrl by one fine step; Page Up
/// and Page Down by a tenth. Nothing for other keys.
std::optional<double> valueAfterKey(const NumberRange& range, double value, int key, Qt::KeyboardModifiers modifiers,
                                    Qt::LayoutDirection direction);

/// A slider over a range with a curve. For a value outside the range the handle is at the end, and the value stays
/// until the user moves it. The wheel works only while the slider has the focus.
class SettingSlider : public QSlider {
  Q_OBJECT

 public:
  SettingSlider(const NumberRange& range, QWidget* parent);

  /// Shows a value without emitting moved(). A handle that is being dragged stays where it is.
  void setShownValue(double value);

 Q_SIGNALS:
  /// The user moved it.
  void moved(double value);
  /// The user double-clicked it.
  void defaultWanted();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  void placeHandle();

  NumberRange range_;
  double value_ = 0;
};

/// The editable number beside a slider. It shows a value outside the range unchanged until the user edits it. Input
/// takes effect on Enter or when the focus leaves; Escape discards it. The wheel works only while the field has the
/// focus.
class ValueField : public QDoubleSpinBox {
  Q_OBJECT

 public:
  ValueField(const NumberRange& range, QWidget* parent);

  /// Shows a value without emitting moved(). Leaves text alone while it is being edited.
  void setShownValue(double value);

  QString textFromValue(double value) const override;
  QValidator::State validate(QString& text, int& position) const override;
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 Q_SIGNALS:
  /// The user changed it. May be outside the range if the value was before.
  void moved(double value);

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  NumberRange range_;
};

}  // namespace veloria
