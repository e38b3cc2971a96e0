#pragma once

#include <QPushButton>
#include <QTimer>
#include <functional>
#include <string>

#include "ports/PanelClearing.h"
#include "ui/cards/Card.h"
#include "ui/script/VerbatimText.h"

namespace veloria {

/// Makes the desktop's own panel clear, or tells how to. Looks once a second while it is shown: the port's change
/// handler belongs to the application.
class PanelCard : public Card {
  Q_OBJECT

 public:
  /// `panel` must outlive the card. `cleared` is called after the panel was made clear from here.
  explicit PanelCard(PanelClearing& panel, std::function<void()> cleared = {}, QWidget* parent = nullptr);

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  enum class Step { idle, asking, working };

  QPushButton* addButton(const QString& text, const char* name, QWidget* row);
  void start();
  void clear();
  void restore();
  void wait();
  void finish(const std::string& problem, const std::string& note);
  void set(Step step);
  void refresh();

  PanelClearing& panel_;
  std::function<void()> cleared_;
  Step step_ = Step::idle;
  QLabel* text_;
  QWidget* byHand_;
  VerbatimText* lines_;
  QPushButton* clear_;
  QPushButton* agree_;
  QPushButton* decline_;
  QPushButton* restore_;
  QLabel* answer_;
  QTimer ticker_;
};

}  // namespace veloria
