#pragma once

#include <QPushButton>
#include <QTimer>
#include <optional>
#include <string>

#include "scene/ScriptError.h"
#include "settings/SettingsEditor.h"
#include "ui/cards/Card.h"
#include "ui/script/ScriptEditor.h"

namespace veloria {

/// Text in the script editor that is not in the record because it has an error. Kept outside the card, so that it
/// survives closing the window.
struct ScriptDraft {
  std::optional<QString> text;
};

/// The user's own scene script, with a summary of the language. Text is checked while it is typed. Valid text is stored
/// after a pause or when the editor loses the focus; invalid text never is.
class ScriptCard : public Card {
  Q_OBJECT

 public:
  static constexpr int checkMs = 200;  ///< after the last key
  static constexpr int storeMs = 600;

  /// Both must outlive it.
  ScriptCard(SettingsEditor& editor, ScriptDraft& draft, QWidget* parent = nullptr);
  /// Stores valid text that is not stored yet.
  ~ScriptCard() override;

 protected:
  void hideEvent(QHideEvent* event) override;

 private:
  using Verdict = std::optional<ScriptError>;  ///< nothing: the text is valid

  void build();
  void showRecord(const NimbraConfig& config);
  void load(const QString& text);
  void typed();
  void check();
  void showVerdict(const Verdict& verdict);
  void store();
  /// Checks and stores what is not stored yet, at once.
  void settle();
  void editBuiltIn();
  void discard();
  void showState();

  SettingsEditor& editor_;
  ScriptDraft& draft_;
  ScriptEditor* text_;
  QLabel* mode_;
  QLabel* notice_;
  QLabel* error_;
  QLabel* state_;
  QPushButton* editBuiltIn_;
  QPushButton* discard_;
  QTimer checkTimer_, storeTimer_;

  std::optional<std::string> shown_;  ///< the record's script that the editor was last given
  bool loading_ = false;
  int texts_ = 0;         ///< counts changes, to recognise answers about older text
  bool checked_ = false;  ///< whether the current text was
  bool storeDue_ = false;
  QString problem_;  ///< why the text can't be used; empty if it can or is unchecked
  Subscription subscription_;
};

}  // namespace veloria
