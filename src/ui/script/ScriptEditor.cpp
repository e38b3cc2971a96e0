#include "ui/script/ScriptEditor.h"

#include <QCoreApplication>
#include <QFontDatabase>
#include <QMimeData>
#include <QStringView>
#include <QTextBlock>
#include <algorithm>
#include <utility>

#include "scene/ScriptReport.h"
#include "ui/QtText.h"

namespace veloria {

namespace {

constexpr int visibleLines = 12;
constexpr QColor errorTint{220, 60, 60, 70};

/// Turns every line end of the scene language into the editor's.
QString withPlainLines(QString text) {
  text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  for (const char16_t end : {u'\r', u'\v', u'\f', u'\u0085', u'\u2028', u'\u2029'}) {
    text.replace(QChar(end), QLatin1Char('\n'));
  }
  return text;
}

qsizetype longestLine(const QString& text) {
  qsizetype longest = 0;
  for (const QStringView line : QStringView(text).tokenize(u'\n')) longest = std::max(longest, line.size());
  return longest;
}

}  // namespace

std::optional<QString> scriptEditProblem(const QString& text) {
  if (const auto error = scriptSizeError(static_cast<std::size_t>(text.toUtf8().size()))) {
    return QCoreApplication::translate("ScriptEditor", "This is too long: %1.").arg(toQString(*error));
  }
  const qsizetype longest = longestLine(text);
  if (longest <= ScriptEditor::maximumLineLength) return std::nullopt;
  return QCoreApplication::translate("ScriptEditor",
                                     "This is too long: a line has %1 characters; at most %2 are allowed.")
      .arg(longest)
      .arg(ScriptEditor::maximumLineLength);
}

ScriptEditor::ScriptEditor(QWidget* parent) : QPlainTextEdit(parent) {
  setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  setLineWrapMode(QPlainTextEdit::NoWrap);
  setTabChangesFocus(true);
  setMinimumWidth(80);
  setMinimumHeight(fontMetrics().lineSpacing() * visibleLines);
}

void ScriptEditor::replaceText(const QString& text) {
  QTextCursor cursor(document());
  cursor.select(QTextCursor::Document);
  cursor.insertText(withPlainLines(text));
}

void ScriptEditor::markLine(int line) {
  markedLine_ = line;
  const QTextBlock block = line > 0 ? document()->findBlockByNumber(line - 1) : QTextBlock();
  if (!block.isValid()) return setExtraSelections({});
  QTextEdit::ExtraSelection mark;
  mark.cursor = QTextCursor(block);
  mark.format.setBackground(errorTint);
  mark.format.setProperty(QTextFormat::FullWidthSelection, true);
  setExtraSelections({mark});
}

void ScriptEditor::insertFromMimeData(const QMimeData* source) {
  if (!source->hasText()) return;
  QString text = source->text();
  if (text.size() > static_cast<qsizetype>(maxScriptBytes)) {
    Q_EMIT refused(scriptEditProblem(text).value_or(QString()));
    return;
  }
  text = withPlainLines(std::move(text));
  const QTextCursor cursor = textCursor();
  const QString all = toPlainText();
  const qsizetype start = cursor.selectionStart();
  const QString after = all.left(start) + text + all.mid(cursor.selectionEnd());
  if (const auto problem = scriptEditProblem(after)) {
    Q_EMIT refused(*problem);
    return;
  }
  textCursor().insertText(text);
  ensureCursorVisible();
}

void ScriptEditor::focusOutEvent(QFocusEvent* event) {
  QPlainTextEdit::focusOutEvent(event);
  if (event->reason() != Qt::PopupFocusReason) Q_EMIT focusLost();
}

}  // namespace veloria
