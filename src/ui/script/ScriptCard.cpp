#include "ui/script/ScriptCard.h"

#include <utility>

#include "scene/BuiltInScripts.h"
#include "scene/LanguageCard.h"
#include "scene/NimbraScript.h"
#include "settings/SettingsCodec.h"
#include "ui/Background.h"
#include "ui/QtText.h"
#include "ui/script/VerbatimText.h"

namespace veloria {

namespace {

constexpr qsizetype longestMessage = 300;

std::optional<ScriptError> verdictOn(const std::string& script) {
  try {
    NimbraScript::parse(script);
    return std::nullopt;
  } catch (const ScriptError& error) {
    return error;
  } catch (const std::exception& error) {
    return ScriptError(0, error.what());
  }
}

QString shortened(const QString& text) {
  return text.size() <= longestMessage ? text : text.left(longestMessage) + QChar(0x2026);
}

/// The record can be stored, but not with this script.
bool tooLongToKeep(const NimbraConfig& config, const std::string& script) {
  NimbraConfig with = config;
  with.customScript = script;
  return !encodeSettings(with) && encodeSettings(config);
}

}  // namespace

ScriptCard::ScriptCard(SettingsEditor& editor, ScriptDraft& draft, QWidget* parent)
    : Card(tr("Your script"), parent),
      editor_(editor),
      draft_(draft),
      text_(new ScriptEditor(this)),
      mode_(makeSentence({}, this)),
      notice_(makeSentence({}, this)),
      error_(makeSentence({}, this)),
      state_(makeSentence({}, this)),
      editBuiltIn_(new QPushButton(tr("Edit as a custom script"), this)),
      discard_(new QPushButton(tr("Discard changes"), this)) {
  build();
  if (draft_.text) load(*draft_.text);
  connect(text_, &QPlainTextEdit::textChanged, this, &ScriptCard::typed);
  connect(text_, &ScriptEditor::focusLost, this, [this] {
    if (!draft_.text) return;
    storeDue_ = true;
    check();
  });
  connect(text_, &ScriptEditor::refused, this, [this](const QString& reason) { setSentence(*notice_, reason); });
  connect(&checkTimer_, &QTimer::timeout, this, &ScriptCard::check);
  connect(&storeTimer_, &QTimer::timeout, this, [this] {
    storeDue_ = true;
    if (checked_) store();
  });
  connect(editBuiltIn_, &QPushButton::clicked, this, &ScriptCard::editBuiltIn);
  connect(discard_, &QPushButton::clicked, this, &ScriptCard::discard);
  subscription_ = editor_.subscribe([this](const NimbraConfig& config) { showRecord(config); });
}

ScriptCard::~ScriptCard() {
  text_->disconnect(this);  // it loses the focus after this is gone
  settle();
}

void ScriptCard::build() {
  checkTimer_.setSingleShot(true);
  checkTimer_.setInterval(checkMs);
  storeTimer_.setSingleShot(true);
  storeTimer_.setInterval(storeMs);
  text_->setAccessibleName(tr("Your script"));
  editBuiltIn_->setObjectName(QStringLiteral("editAsCustomScript"));
  discard_->setObjectName(QStringLiteral("discardDraft"));
  error_->setObjectName(QStringLiteral("scriptError"));
  state_->setObjectName(QStringLiteral("scriptState"));
  notice_->setObjectName(QStringLiteral("scriptNotice"));
  body().addWidget(mode_);
  body().addWidget(editBuiltIn_, 0, Qt::AlignLeading);
  body().addWidget(text_);
  for (QLabel* line : {notice_, error_, state_}) body().addWidget(line);
  body().addWidget(discard_, 0, Qt::AlignLeading);
  body().addWidget(makeSentence(tr("The language:"), this));
  body().addWidget(new VerbatimText(tr("The script language"), toQString(languageCard), this));
}

void ScriptCard::showRecord(const NimbraConfig& config) {
  const bool runs = config.visualizer == Visualizer::script;
  setSentence(*mode_, runs ? QString() : tr("Used when Script is selected above."));
  editBuiltIn_->setVisible(!builtInScript(config.visualizer).empty());
  if (draft_.text || shown_ == config.customScript) return showState();
  shown_ = config.customScript;
  load(toQString(config.customScript));
}

void ScriptCard::load(const QString& text) {
  const auto unfit = scriptEditProblem(text);
  loading_ = true;
  text_->replaceText(unfit ? QString() : text);
  loading_ = false;
  text_->setReadOnly(unfit.has_value());
  ++texts_;
  if (!unfit) return check();
  problem_ = *unfit;
  checked_ = true;
  showState();
}

void ScriptCard::typed() {
  if (loading_) return;
  setSentence(*notice_, {});
  ++texts_;
  checked_ = false;
  storeDue_ = false;
  draft_.text = text_->toPlainText();
  checkTimer_.start();
  storeTimer_.start();
}

void ScriptCard::check() {
  checkTimer_.stop();
  const QString text = text_->toPlainText();
  if (const auto unfit = scriptEditProblem(text)) return showVerdict(ScriptError(0, unfit->toStdString()));
  runInBackground(
      this, [script = text.toStdString()] { return verdictOn(script); },
      [this, asked = texts_](const Verdict& verdict) {
        if (asked == texts_) showVerdict(verdict);
      });
}

void ScriptCard::showVerdict(const Verdict& verdict) {
  checked_ = true;
  problem_ = verdict ? shortened(toQString(verdict->line > 0 ? verdict->description() : verdict->message)) : QString();
  text_->markLine(verdict ? verdict->line : 0);
  showState();
  if (storeDue_) store();
}

void ScriptCard::store() {
  storeDue_ = false;
  if (!draft_.text || !problem_.isEmpty()) return;
  std::string script = draft_.text->toStdString();
  if (tooLongToKeep(editor_.config(), script)) {
    problem_ = tr("This script is too long to save.");
    return showState();
  }
  storeTimer_.stop();
  draft_.text.reset();
  shown_ = script;
  editor_.change("customScript", [&](NimbraConfig& config) { config.customScript = std::move(script); });
  showState();
}

void ScriptCard::settle() {
  if (!draft_.text) return;
  storeDue_ = true;
  if (checked_) return store();
  ++texts_;
  checkTimer_.stop();
  const auto unfit = scriptEditProblem(*draft_.text);
  showVerdict(unfit ? ScriptError(0, unfit->toStdString()) : verdictOn(draft_.text->toStdString()));
}

void ScriptCard::hideEvent(QHideEvent* event) {
  Card::hideEvent(event);
  settle();
}

void ScriptCard::editBuiltIn() {
  const std::string script(builtInScript(editor_.config().visualizer));
  const std::string before = editor_.config().customScript;
  draft_.text.reset();
  editor_.change("Edit as a custom script", [&](NimbraConfig& config) {
    config.customScript = script;
    config.visualizer = Visualizer::script;
  });
  if (text_->toPlainText() != toQString(script)) load(toQString(script));
  text_->setFocus(Qt::OtherFocusReason);
  const bool replaced = !before.empty() && before != script;
  setSentence(*notice_, replaced ? tr("This replaced your previous script. Undo restores it.") : QString());
}

void ScriptCard::discard() {
  draft_.text.reset();
  shown_ = editor_.config().customScript;
  load(toQString(*shown_));
}

void ScriptCard::showState() {
  const bool draft = draft_.text && checked_ && !problem_.isEmpty();
  setSentence(*error_, breakable(problem_));
  text_->setAccessibleDescription(problem_);
  setSentence(
      *state_,
      draft
          ? tr("This script has an error, so the last working one keeps running. Your text stays here until you fix it "
               "or quit Veloria.")
          : QString());
  discard_->setVisible(draft);
}

}  // namespace veloria
