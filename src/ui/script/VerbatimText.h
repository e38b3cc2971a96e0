#pragma once

#include <QPlainTextEdit>
#include <QPushButton>

namespace veloria {

/// Text to be read and copied as it is: fixed pitch, never wrapped, as tall as its lines, with a scroll bar where the
/// window is too narrow for them.
class VerbatimText : public QPlainTextEdit {
  Q_OBJECT

 public:
  /// `name` is for those who hear the window.
  VerbatimText(const QString& name, const QString& text, QWidget* parent);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  bool event(QEvent* event) override;

 private:
  void fit();
};

/// A button that copies a text to the clipboard and says so for a moment.
QPushButton* makeCopyButton(const VerbatimText& text, QWidget* parent);

}  // namespace veloria
