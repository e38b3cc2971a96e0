#include "ui/controls/NumberWidgets.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <limits>
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

/// Decimals that are kept of a typed or stored value.
constexpr int keptDecimals = 10;

double finite(double value, double instead) {
  if (std::isnan(value)) return instead;
  constexpr double most = std::numeric_limits<double>::max();
  return std::clamp(value, -most, most);
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

ValueField::ValueField(const NumberRange& range, QWidget* parent) : QDoubleSpinBox(parent), range_(range) {
  setDecimals(range.decimals == 0 ? 0 : keptDecimals);
  setRange(range.minimum, range.maximum);
  setSingleStep(range.step);
  setSuffix(SettingCatalogue::tr(range.unit));
  setButtonSymbols(NoButtons);
  setAlignment(Qt::AlignRight);
  setKeyboardTracking(false);
  setFocusPolicy(Qt::StrongFocus);
  connect(this, &QDoubleSpinBox::valueChanged, this, [this](double typed) {
    lineEdit()->setModified(false);
    Q_EMIT moved(typed);
  });
}

void ValueField::setShownValue(double value) {
  if (hasFocus() && lineEdit()->isModified()) return;
  const QSignalBlocker quiet(this);
  const double shown = finite(value, range_.minimum);
  setRange(std::min(range_.minimum, shown), std::max(range_.maximum, shown));
  setValue(shown);
}

QString ValueField::textFromValue(double value) const {
  QLocale plain = locale();
  plain.setNumberOptions(plain.numberOptions() | QLocale::OmitGroupSeparator);
  if (std::abs(value) >= 1e7) return plain.toString(value, 'g', 3);
  const double scale = std::pow(10.0, range_.decimals);
  const bool exact = std::abs(std::round(value * scale) / scale - value) < 1e-11;
  return exact ? plain.toString(value, 'f', range_.decimals)
               : plain.toString(value, 'f', QLocale::FloatingPointShortest);
}

QValidator::State ValueField::validate(QString& text, int& position) const {
  if (text == prefix() + textFromValue(value()) + suffix()) return QValidator::Acceptable;
  return QDoubleSpinBox::validate(text, position);
}

QSize ValueField::sizeHint() const {
  const auto width = [this](const QString& text) { return fontMetrics().horizontalAdvance(text); };
  // Wide enough for most values, so that the fields of a card align.
  const int number = std::max({width(QStringLiteral("-00.0000")), width(textFromValue(range_.minimum) + suffix()),
                               width(textFromValue(range_.maximum) + suffix())});
  return {number + 18, QDoubleSpinBox::sizeHint().height()};
}

bool ValueField::event(QEvent* event) {
  // Undo belongs to the window unless there is typing to undo.
  if (event->type() == QEvent::ShortcutOverride && !lineEdit()->isModified()) {
    const auto& key = static_cast<QKeyEvent&>(*event);
    if (key.matches(QKeySequence::Undo) || key.matches(QKeySequence::Redo)) return false;
  }
  return QDoubleSpinBox::event(event);
}

void ValueField::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape && lineEdit()->isModified()) {
    lineEdit()->setText(prefix() + textFromValue(value()) + suffix());
    selectAll();
    return;
  }
  const bool vertical = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down ||
                        (!(event->modifiers() & Qt::ControlModifier) &&
                         (event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown));
  if (!vertical) return QDoubleSpinBox::keyPressEvent(event);
  interpretText();
  lineEdit()->setModified(false);
  if (const auto next = valueAfterKey(range_, value(), event->key(), event->modifiers(), layoutDirection())) {
    Q_EMIT moved(*next);
    selectAll();
  }
}

void ValueField::wheelEvent(QWheelEvent* event) {
  if (!hasFocus()) return event->ignore();
  QDoubleSpinBox::wheelEvent(event);
}

}  // namespace veloria
