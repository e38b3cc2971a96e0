#pragma once

#include <QPlainTextEdit>
#include <QPushButton>

namespace veloria {

/// Read-only text to copy: fixed pitch, not wrapped, as tall as its lines, with a scroll bar if the window is too
/// narrow.
class VerbatimText : public QPlainTextEdit {
  Q_OBJECT

 public:
  /// `name` is the accessible name.
  VerbatimText(const QString& name, const QString& text, QWidget* parent);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  bool event(QEvent* event) override;

 private:
  void fit();
};

/// A button that copies a text to the clipboard and briefly confirms it.
QPushButton* makeCopyButton(const VerbatimText& text, QWidget* parent);

}  // namespace veloria
