#include "ui/window/TabStrip.h"

#include <QEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>
#include <algorithm>

namespace veloria {

namespace {

/// A word, underlined if it is the current tab.
class TabButton : public QToolButton {
 public:
  TabButton(const QString& title, QWidget* parent) : QToolButton(parent) {
    setText(title);
    setCheckable(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
  }

  QSize sizeHint() const override {
    const QSize words = fontMetrics().size(Qt::TextShowMnemonic, text());
    return words + QSize(12, 12);
  }
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    if (underMouse() && !isChecked()) painter.fillRect(rect(), palette().color(QPalette::Midlight));
    const bool lit = isChecked() || underMouse();
    QColor ink = palette().color(QPalette::WindowText);
    if (!lit) ink.setAlphaF(0.75F);
    painter.setPen(ink);
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextShowMnemonic, text());
    const QRect line(rect().left() + 3, rect().bottom() - 2, rect().width() - 6, 3);
    if (isChecked()) painter.fillRect(line, palette().color(QPalette::Highlight));
    if (!hasFocus()) return;
    QStyleOptionFocusRect option;
    option.initFrom(this);
    option.rect = rect().adjusted(1, 1, -1, -4);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
  }
};

}  // namespace

TabStrip::TabStrip(const QStringList& titles, QWidget* parent) : QWidget(parent), buttons_(new QButtonGroup(this)) {
  for (const QString& title : titles) {
    buttons_->addButton(new TabButton(title, this), static_cast<int>(buttons_->buttons().size()));
  }
  QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
  connect(buttons_, &QButtonGroup::idClicked, this, &TabStrip::chosen);
}

void TabStrip::setCurrent(int index) {
  if (QAbstractButton* button = buttons_->button(index)) return button->setChecked(true);
  buttons_->setExclusive(false);
  for (QAbstractButton* button : buttons_->buttons()) button->setChecked(false);
  buttons_->setExclusive(true);
}

int TabStrip::widestButton() const {
  int widest = 1;
  for (const QAbstractButton* button : buttons_->buttons()) widest = std::max(widest, button->sizeHint().width());
  return widest;
}

int TabStrip::allButtons() const {
  int all = 0;
  for (const QAbstractButton* button : buttons_->buttons()) all += button->sizeHint().width();
  return all;
}

int TabStrip::columnsFor(int width) const {
  const int count = static_cast<int>(buttons_->buttons().size());
  if (allButtons() <= width) return count;
  const int fitting = std::clamp(width / widestButton(), 1, count);
  const int rows = (count + fitting - 1) / fitting;
  return (count + rows - 1) / rows;
}

int TabStrip::heightForWidth(int width) const {
  const int count = static_cast<int>(buttons_->buttons().size());
  const int columns = columnsFor(width);
  return (count + columns - 1) / columns * buttons_->button(0)->sizeHint().height();
}

QSize TabStrip::sizeHint() const {
  return {allButtons(), buttons_->button(0)->sizeHint().height()};
}

QSize TabStrip::minimumSizeHint() const {
  return {widestButton(), buttons_->button(0)->sizeHint().height()};
}

void TabStrip::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  placeButtons();
}

void TabStrip::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() != QEvent::FontChange && event->type() != QEvent::StyleChange) return;
  updateGeometry();
  placeButtons();
}

void TabStrip::placeButtons() {
  const QList<QAbstractButton*> all = buttons_->buttons();
  const int count = static_cast<int>(all.size());
  const int columns = columnsFor(width());
  const int height = all[0]->sizeHint().height();
  const int spare = columns == count ? std::max(width() - allButtons(), 0) : 0;
  int x = 0;
  for (int i = 0; i < count; ++i) {
    if (i % columns == 0) x = 0;
    const int share = spare * (i + 1) / count - spare * i / count;
    const int wide = columns == count ? all[i]->sizeHint().width() + share : width() / columns;
    all[i]->setGeometry(isRightToLeft() ? width() - x - wide : x, i / columns * height, wide, height);
    x += wide;
  }
}

}  // namespace veloria
