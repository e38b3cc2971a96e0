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

/// What stands in the script editor and not in the record: text that is not right yet. Kept apart from the card, so
/// that it is still there when the window is opened again.
struct ScriptDraft {
  std::optional<QString> text;
};

/// The person's own scene script and the language on a card. Text is checked as it is typed; what is right goes into
/// the record after a pause, or when the editor is left, and what is not never does.
class ScriptCard : public Card {
  Q_OBJECT

 public:
  static constexpr int checkMs = 200;  ///< after the last key
  static constexpr int storeMs = 600;

  /// Both must outlive it.
  ScriptCard(SettingsEditor& editor, ScriptDraft& draft, QWidget* parent = nullptr);
  /// Stores what is right and not stored yet.
  ~ScriptCard() override;

 protected:
  void hideEvent(QHideEvent* event) override;

 private:
  using Verdict = std::optional<ScriptError>;  ///< nothing: the text is right

  void build();
  void showRecord(const NimbraConfig& config);
  void load(const QString& text);
  void typed();
  void check();
  void take(const Verdict& verdict);
  void store();
  /// Checks and stores what is not stored yet, at once.
  void settle();
  void takeBuiltIn();
  void discard();
  void showState();

  SettingsEditor& editor_;
  ScriptDraft& draft_;
  ScriptEditor* text_;
  QLabel* mode_;
  QLabel* notice_;
  QLabel* error_;
  QLabel* state_;
  QPushButton* takeBuiltIn_;
  QPushButton* discard_;
  QTimer checkTimer_, storeTimer_;

  std::optional<std::string> shown_;  ///< the record's script that the editor was last given
  bool loading_ = false;
  int texts_ = 0;         ///< counts them, so that an answer about an older one is known
  bool checked_ = false;  ///< the text as it is now
  bool storeDue_ = false;
  QString problem_;  ///< why the text can't be used; empty while it can, or is not known
  Subscription subscription_;
};

}  // namespace veloria
