#include "ui/controls/SettingLabel.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QMouseEvent>

namespace veloria {

namespace {

QColor mixed(const QColor& a, const QColor& b, double share) {
  const auto part = [share](int x, int y) { return static_cast<int>(x * share + y * (1 - share)); };
  return QColor(part(a.red(), b.red()), part(a.green(), b.green()), part(a.blue(), b.blue()));
}

}  // namespace

SettingLabel::SettingLabel(Tone tone, const QString& text, QWidget* parent) : QLabel(text, parent), tone_(tone) {
  setTextFormat(Qt::PlainText);
  setWordWrap(true);
  setTone();
}

void SettingLabel::setTone() {
  if (tone_ == Tone::title || settingTone_ || parentWidget() == nullptr) return;
  settingTone_ = true;
  QFont small = parentWidget()->font();
  if (small.pointSizeF() > 0) small.setPointSizeF(small.pointSizeF() * 0.9);
  setFont(small);
  const QPalette& around = parentWidget()->palette();
  QPalette dim;
  dim.setColor(QPalette::WindowText, mixed(around.color(QPalette::WindowText), around.color(QPalette::Window), 0.68));
  setPalette(dim);
  settingTone_ = false;
}

void SettingLabel::changeEvent(QEvent* event) {
  QLabel::changeEvent(event);
  const QEvent::Type type = event->type();
  if (type == QEvent::PaletteChange || type == QEvent::FontChange || type == QEvent::ParentChange) setTone();
}

void SettingLabel::mousePressEvent(QMouseEvent* event) {
  event->setAccepted(event->button() == Qt::LeftButton);
}

void SettingLabel::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) Q_EMIT clicked();
}

void SettingLabel::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) Q_EMIT doubleClicked();
}

QLayout* makeButtonRow(QAbstractButton& button, const QString& title, const QString& help, QWidget& parent) {
  button.setAccessibleName(title);
  button.setAccessibleDescription(help);
  auto* words = new QVBoxLayout;
  words->setSpacing(1);
  for (const auto tone : {SettingLabel::Tone::title, SettingLabel::Tone::help}) {
    auto* label = new SettingLabel(tone, tone == SettingLabel::Tone::title ? title : help, &parent);
    if (tone == SettingLabel::Tone::title) label->setBuddy(&button);
    QObject::connect(label, &SettingLabel::clicked, &button, [&button] {
      button.setFocus(Qt::MouseFocusReason);
      button.click();
    });
    words->addWidget(label);
  }
  auto* row = new QHBoxLayout;
  row->setSpacing(8);
  row->addWidget(&button, 0, Qt::AlignTop);
  row->addLayout(words, 1);
  return row;
}

}  // namespace veloria
