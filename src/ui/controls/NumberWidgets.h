#pragma once

#include <QDoubleSpinBox>
#include <QSlider>

#include "ui/controls/SettingCatalogue.h"

namespace veloria {

/// What a key does to a number: arrows move by a fiftieth of the travel, with Shift or Ctrl by one fine step, Page Up
/// and Page Down by a tenth. Nothing for other keys.
std::optional<double> valueAfterKey(const NumberRange& range, double value, int key, Qt::KeyboardModifiers modifiers,
                                    Qt::LayoutDirection direction);

/// A slider over a range with a curve. The value that it is given may lie outside: the handle then stands at the end,
/// and nothing is moved before a person does so. The wheel counts only while it has the focus.
class SettingSlider : public QSlider {
  Q_OBJECT

 public:
  SettingSlider(const NumberRange& range, QWidget* parent);

  /// Shows a value without moved(). The handle is left alone while it is dragged.
  void setShownValue(double value);

 Q_SIGNALS:
  /// A person moved it.
  void moved(double value);
  /// A person double-clicked on it.
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
