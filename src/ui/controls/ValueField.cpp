#include "ui/controls/ValueField.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QSignalBlocker>
#include <algorithm>
#include <cmath>
#include <limits>

#include "ui/controls/SettingSlider.h"

namespace veloria {

namespace {

/// Digits that a typed or stored value may have; more are not told apart.
constexpr int keptDecimals = 10;

double finite(double value, double instead) {
  if (std::isnan(value)) return instead;
  constexpr double most = std::numeric_limits<double>::max();
  return std::clamp(value, -most, most);
}

}  // namespace

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
  // As wide as most values need, so that the fields of a card stand in a column.
  const int number = std::max({width(QStringLiteral("-00.0000")), width(textFromValue(range_.minimum) + suffix()),
                               width(textFromValue(range_.maximum) + suffix())});
  return {number + 18, QDoubleSpinBox::sizeHint().height()};
}

bool ValueField::event(QEvent* event) {
  // Taking back belongs to the window unless there is typing to take back.
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
