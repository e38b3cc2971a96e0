#pragma once

#include <QPlainTextEdit>
#include <functional>
#include <optional>
#include <string>

namespace veloria {

/// Why this text is too large to edit, in bytes or in the length of a line; nothing if it is not.
std::optional<QString> scriptEditProblem(const QString& text);

/// The editor for scene scripts: fixed pitch, no wrapping, plain text. It refuses pastes and drops that are too large,
/// so that the window never freezes.
class ScriptEditor : public QPlainTextEdit {
  Q_OBJECT

 public:
  /// Longer lines take seconds to lay out; no script needs them.
  static constexpr qsizetype maximumLineLength = 20000;

  explicit ScriptEditor(QWidget* parent = nullptr);

  /// Replaces everything as if typed, so that the editor's undo restores the old text.
  void replaceText(const QString& text);

  /// Marks a line, counted from 1; 0 for none.
  void markLine(int line);
  int markedLine() const { return markedLine_; }

 Q_SIGNALS:
  void focusLost();
  /// A paste was refused, and why.
  void refused(const QString& reason);

 protected:
  void insertFromMimeData(const QMimeData* source) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  int markedLine_ = 0;
};

}  // namespace veloria
