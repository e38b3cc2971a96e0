#include "ui/cards/PanelCard.h"

#include <QPointer>

#include <utility>

#include "ui/QtText.h"
#include "ui/controls/Tile.h"

namespace veloria {

using Way = PanelClearing::Way;

namespace {

constexpr int refreshMilliseconds = 1000;

}  // namespace

PanelCard::PanelCard(PanelClearing& panel, std::function<void()> cleared, QWidget* parent)
    : Card(tr("Let the light through the panel"), parent),
      panel_(panel),
      cleared_(std::move(cleared)),
      text_(makeSentence({}, this)),
      byHand_(new QWidget(this)),
      lines_(new VerbatimText(tr("Lines to copy"), {}, byHand_)),
      answer_(makeSentence({}, this)) {
  text_->setObjectName(QStringLiteral("panelText"));
  answer_->setObjectName(QStringLiteral("panelAnswer"));
  lines_->setObjectName(QStringLiteral("panelLines"));
  body().addWidget(text_);
  auto* column = new QVBoxLayout(byHand_);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(lines_);
  column->addWidget(makeCopyButton(*lines_, byHand_), 0, Qt::AlignLeading);
  body().addWidget(byHand_);
  auto* row = new QWidget(this);
  row->setLayout(new TileLayout(TileLayout::Width::natural, row));
  clear_ = addButton(tr("Make the panel clear"), "clearPanel", row);
  agree_ = addButton(tr("Go on"), "agreeToClear", row);
  decline_ = addButton(tr("Leave it as it is"), "declineToClear", row);
  restore_ = addButton(tr("Put the panel back"), "restorePanel", row);
  body().addWidget(row);
  body().addWidget(answer_);
  connect(clear_, &QPushButton::clicked, this, &PanelCard::start);
  connect(agree_, &QPushButton::clicked, this, [this] { clear(); });
  connect(decline_, &QPushButton::clicked, this, [this] { set(Step::idle); });
  connect(restore_, &QPushButton::clicked, this, [this] { restore(); });
  connect(&ticker_, &QTimer::timeout, this, &PanelCard::refresh);
  refresh();
}

QPushButton* PanelCard::addButton(const QString& text, const char* name, QWidget* row) {
  auto* button = new QPushButton(text, row);
  button->setObjectName(QLatin1String(name));
  row->layout()->addWidget(button);
  return button;
}

void PanelCard::showEvent(QShowEvent* event) {
  Card::showEvent(event);
  refresh();
  ticker_.start(refreshMilliseconds);
}

void PanelCard::hideEvent(QHideEvent* event) {
  ticker_.stop();
  Card::hideEvent(event);
}

void PanelCard::start() {
  if (panel_.offer().way == Way::afterAsking) return set(Step::asking);
  clear();
}

void PanelCard::clear() {
  wait();
  panel_.clear([card = QPointer<PanelCard>(this)](const std::string& problem, const std::string& note) {
    if (!card) return;
    card->finish(problem, note);
    if (problem.empty() && note.empty() && card->cleared_) card->cleared_();
  });
}

void PanelCard::restore() {
  wait();
  panel_.restore([card = QPointer<PanelCard>(this)](const std::string& problem, const std::string& note) {
    if (card) card->finish(problem, note);
  });
}

void PanelCard::wait() {
  set(Step::working);
  setSentence(*answer_, tr("Asking the desktop…"));
}

void PanelCard::finish(const std::string& problem, const std::string& note) {
  setSentence(*answer_, breakable(toQString(problem.empty() ? note : problem)));
  set(Step::idle);
}

void PanelCard::set(Step step) {
  step_ = step;
  refresh();
}

void PanelCard::refresh() {
  const auto offer = panel_.offer();
  const bool clears = offer.way == Way::oneClick || offer.way == Way::afterAsking;
  const bool isClear = panel_.letsLightThrough();
  const bool canRestore = panel_.canRestore();
  const bool unknown = offer.way == Way::none && offer.text.empty();
  const QString state = isClear   ? tr("The panel lets the light through.")
                        : unknown ? tr("Looking for the panel…")
                                  : toQString(offer.text);
  setSentence(*text_, breakable(state));
  if (lines_->toPlainText() != toQString(offer.lines)) lines_->setPlainText(toQString(offer.lines));
  byHand_->setVisible(!isClear && !offer.lines.empty());
  clear_->setVisible(clears && !isClear && step_ != Step::asking);
  agree_->setVisible(step_ == Step::asking);
  decline_->setVisible(step_ == Step::asking);
  restore_->setVisible(canRestore && step_ != Step::asking);
  for (QPushButton* button : {clear_, restore_}) button->setEnabled(step_ == Step::idle);
}

}  // namespace veloria
