#pragma once

#include <QPlainTextEdit>
#include <functional>
#include <optional>
#include <string>

namespace veloria {

/// Why a text of so many bytes, or with such long lines, can't be edited here; nothing when it can.
std::optional<QString> scriptEditProblem(const QString& text);

/// Where a scene script is written: fixed pitch, one line a line, text only. What is too large is refused when it is
/// pasted or dropped, so that the window never stands still over it.
class ScriptEditor : public QPlainTextEdit {
  Q_OBJECT

 public:
  /// A longer line takes an editor seconds to lay out; no script needs one.
  static constexpr qsizetype maximumLineLength = 20000;

  explicit ScriptEditor(QWidget* parent = nullptr);

  /// Replaces everything as if it had been typed: the editor's own undo brings the old text back.
  void replaceText(const QString& text);

  /// Marks a line, counted from 1; 0 for none.
  void markLine(int line);
  int markedLine() const { return markedLine_; }

 Q_SIGNALS:
  void focusLost();
  /// A paste that was not taken, and why.
  void refused(const QString& reason);

 protected:
  void insertFromMimeData(const QMimeData* source) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  int markedLine_ = 0;
};

}  // namespace veloria
