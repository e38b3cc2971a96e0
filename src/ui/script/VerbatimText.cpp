#include "ui/script/VerbatimText.h"

#include <QAbstractTextDocumentLayout>
#include <QClipboard>
#include <QCoreApplication>
#include <QEvent>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QScrollBar>
#include <QTextBlock>
#include <QTimer>
#include <algorithm>
#include <cmath>

namespace veloria {

namespace {

constexpr int copiedMs = 1500;

}  // namespace

VerbatimText::VerbatimText(const QString& name, const QString& text, QWidget* parent) : QPlainTextEdit(parent) {
  setAccessibleName(name);
  setReadOnly(true);
  setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  setLineWrapMode(QPlainTextEdit::NoWrap);
  setTabChangesFocus(true);
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setMinimumWidth(80);
  connect(this, &QPlainTextEdit::textChanged, this, &VerbatimText::fit);
  setPlainText(text);
}

void VerbatimText::resizeEvent(QResizeEvent* event) {
  QPlainTextEdit::resizeEvent(event);
  fit();
}

bool VerbatimText::event(QEvent* event) {
  const bool handled = QPlainTextEdit::event(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) fit();
  return handled;
}

void VerbatimText::fit() {
  const QFontMetricsF metrics(font());
  const QAbstractTextDocumentLayout& layout = *document()->documentLayout();
  const double around = 2 * (frameWidth() + document()->documentMargin());
  double widest = 0;
  double height = around + 1;
  for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
    widest = std::max(widest, metrics.horizontalAdvance(block.text()));
    height += layout.blockBoundingRect(block).height();
  }
  if (widest + around > width()) height += horizontalScrollBar()->sizeHint().height();
  setFixedHeight(static_cast<int>(std::ceil(height)));
}

QPushButton* makeCopyButton(const VerbatimText& text, QWidget* parent) {
  auto* button = new QPushButton(QCoreApplication::translate("VerbatimText", "Copy"), parent);
  button->setAccessibleDescription(text.accessibleName());
  auto* timer = new QTimer(button);
  timer->setSingleShot(true);
  timer->setInterval(copiedMs);
  QObject::connect(button, &QPushButton::clicked, &text, [&text, button, timer] {
    QGuiApplication::clipboard()->setText(text.toPlainText());
    button->setText(QCoreApplication::translate("VerbatimText", "Copied"));
    timer->start();
  });
  QObject::connect(timer, &QTimer::timeout, button,
                   [button] { button->setText(QCoreApplication::translate("VerbatimText", "Copy")); });
  return button;
}

}  // namespace veloria
