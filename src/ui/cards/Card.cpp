#include "ui/cards/Card.h"

namespace veloria {

Card::Card(const QString& title, QWidget* parent) : QFrame(parent), title_(new QLabel(title, this)) {
  setFrameShape(QFrame::StyledPanel);
  setAccessibleName(title);
  QFont font = title_->font();
  font.setBold(true);
  title_->setFont(font);
  title_->setWordWrap(true);
  auto* column = new QVBoxLayout(this);
  column->addWidget(title_);
  body_ = new QVBoxLayout;
  column->addLayout(body_);
}

QLabel* makeSentence(const QString& text, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setWordWrap(true);
  label->setTextFormat(Qt::PlainText);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  setSentence(*label, text);
  return label;
}

void setSentence(QLabel& label, const QString& text) {
  if (label.text() != text) label.setText(text);
  label.setVisible(!text.isEmpty());
}

}  // namespace veloria
