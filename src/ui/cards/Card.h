#pragma once

#include <QFrame>
#include <QLabel>
#include <QVBoxLayout>

namespace veloria {

/// A titled frame around some controls of a tab.
class Card : public QFrame {
  Q_OBJECT

 public:
  explicit Card(const QString& title, QWidget* parent = nullptr);

  QString title() const { return title_->text(); }
  /// The content goes here.
  QVBoxLayout& body() { return *body_; }

 private:
  QLabel* title_;
  QVBoxLayout* body_;
};

/// A label for sentences: wraps, can be selected, and takes no room while it is empty.
QLabel* makeSentence(const QString& text, QWidget* parent);
void setSentence(QLabel& label, const QString& text);

}  // namespace veloria
