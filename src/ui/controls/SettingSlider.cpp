#include "ui/controls/SettingSlider.h"

#include <QKeyEvent>
#include <QSignalBlocker>
#include <QWheelEvent>
#include <cmath>
#include <optional>

#include "ui/controls/SettingValue.h"

namespace veloria {

namespace {

constexpr int places = 1000;
constexpr double arrowTravel = 0.02;
constexpr double pageTravel = 0.1;

/// -1, 0 or 1.
int directionOf(int key, Qt::LayoutDirection layout) {
  const int right = layout == Qt::RightToLeft ? -1 : 1;
  switch (key) {
    case Qt::Key_Up:
    case Qt::Key_PageUp:
      return 1;
    case Qt::Key_Down:
    case Qt::Key_PageDown:
      return -1;
    case Qt::Key_Right:
      return right;
    case Qt::Key_Left:
      return -right;
    default:
      return 0;
  }
}

}  // namespace

std::optional<double> valueAfterKey(const NumberRange& range, double value, int key, Qt::KeyboardModifiers modifiers,
                                    Qt::LayoutDirection layout) {
  const int direction = directionOf(key, layout);
  if (direction == 0) return std::nullopt;
  if (key == Qt::Key_PageUp || key == Qt::Key_PageDown) return movedBy(range, value, direction * pageTravel);
  if (modifiers & (Qt::ShiftModifier | Qt::ControlModifier)) return steppedBy(range, value, direction);
  return movedBy(range, value, direction * arrowTravel);
}

SettingSlider::SettingSlider(const NumberRange& range, QWidget* parent)
    : QSlider(Qt::Horizontal, parent), range_(range) {
  setRange(0, places);
  setSingleStep(static_cast<int>(places * arrowTravel));
  setPageStep(static_cast<int>(places * pageTravel));
  setFocusPolicy(Qt::StrongFocus);
  connect(this, &QSlider::valueChanged, this,
          [this](int place) { Q_EMIT moved(valueAt(range_, static_cast<double>(place) / places)); });
  connect(this, &QSlider::sliderReleased, this, &SettingSlider::placeHandle);
}

void SettingSlider::setShownValue(double value) {
  value_ = value;
  if (!isSliderDown()) placeHandle();
}

void SettingSlider::placeHandle() {
  const QSignalBlocker quiet(this);
  setValue(static_cast<int>(std::lround(travelOf(range_, value_) * places)));
}

void SettingSlider::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Home) {
    Q_EMIT moved(range_.minimum);
  } else if (event->key() == Qt::Key_End) {
    Q_EMIT moved(range_.maximum);
  } else if (const bool shortcut = event->modifiers() & Qt::ControlModifier &&
                                   (event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown);
             shortcut) {
    event->ignore();
  } else if (const auto value = valueAfterKey(range_, value_, event->key(), event->modifiers(), layoutDirection())) {
    Q_EMIT moved(*value);
  } else {
    event->ignore();
  }
}

void SettingSlider::wheelEvent(QWheelEvent* event) {
  if (!hasFocus()) return event->ignore();
  QSlider::wheelEvent(event);
}

void SettingSlider::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) Q_EMIT defaultWanted();
}

}  // namespace veloria
