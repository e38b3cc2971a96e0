#include "ui/window/Pages.h"

#include <QPushButton>
#include <QTimer>
#include <algorithm>
#include <string_view>
#include <utility>

#include "ui/cards/Card.h"
#include "ui/controls/SettingControl.h"
#include "ui/controls/SettingLabel.h"

namespace veloria {

namespace {

bool sameText(const char* a, const char* b) {
  if (a == nullptr || b == nullptr) return a == b;
  return std::string_view(a) == b;
}

QString folded(const QString& text) {
  QString plain;
  for (const QChar c : text.normalized(QString::NormalizationForm_KD)) {
    if (!c.isMark()) plain += c;
  }
  return plain.toCaseFolded();
}

void add(QString& text, const char* english) {
  text += SettingCatalogue::tr(english) + '\n' + QString::fromUtf8(english) + '\n';
}

}  // namespace

SettingsPage::SettingsPage(QWidget* parent) : QScrollArea(parent) {
  setFrameShape(NoFrame);
  setWidgetResizable(true);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFocusPolicy(Qt::NoFocus);
  auto* content = new QWidget;
  column_ = new QVBoxLayout(content);
  column_->setContentsMargins(0, 6, 6, 6);
  column_->setSpacing(8);
  setWidget(content);
}

TabPage::TabPage(SettingTab tab, SettingsEditor& editor, QWidget* parent)
    : SettingsPage(parent), tab_(tab), editor_(editor) {}

void TabPage::addCard(CardPlacement placement) {
  placements_.push_back(std::move(placement));
}

void TabPage::build() {
  if (std::exchange(built_, true)) return;
  addCardsAfter(nullptr);
  addGroups();
  column().addStretch(1);
}

void TabPage::addGroups() {
  Card* card = nullptr;
  const char* group = nullptr;
  for (const Setting& setting : SettingCatalogue::all()) {
    if (setting.tab != tab_) continue;
    if (!sameText(setting.group, group)) {
      if (group != nullptr) addCardsAfter(group);
      group = setting.group;
      card = new Card(SettingCatalogue::tr(group), widget());
      card->body().setSpacing(10);
      column().addWidget(card);
    }
    card->body().addWidget(makeSettingControl(setting, editor_, card));
  }
  if (group != nullptr) addCardsAfter(group);
}

void TabPage::addCardsAfter(const char* group) {
  for (const CardPlacement& placement : placements_) {
    if (!sameText(placement.afterGroup, group)) continue;
    QWidget* card = placement.make();
    column().addWidget(card);
    cards_.emplace_back(placement.title, card);
  }
}

void TabPage::showCard(const QString& title) {
  for (const auto& [name, card] : cards_) {
    // Once the page, perhaps just built, has its layout.
    if (name == title) QTimer::singleShot(0, card, [this, shown = card] { ensureWidgetVisible(shown, 0, 8); });
  }
}

QStringList searchWords(const QString& typed) {
  return folded(typed).simplified().split(' ', Qt::SkipEmptyParts);
}

bool containsWords(const QString& text, const QStringList& words) {
  const QString plain = folded(text);
  return std::all_of(words.begin(), words.end(), [&](const QString& word) { return plain.contains(word); });
}

QString searchText(const Setting& setting) {
  QString text = QString::fromUtf8(setting.key.data(), static_cast<qsizetype>(setting.key.size())) + '\n';
  for (const char* english : {setting.title, setting.help, setting.group, setting.synonyms}) add(text, english);
  add(text, SettingCatalogue::tabTitle(setting.tab));
  for (const Choice& choice : SettingCatalogue::choices(setting)) {
    add(text, choice.title);
    add(text, choice.help);
  }
  return text;
}

SearchPage::SearchPage(SettingsEditor& editor, QWidget* parent) : SettingsPage(parent), editor_(editor) {
  nothing_ = makeSentence({}, widget());
  column().addWidget(nothing_);
  column().addStretch(1);
  column().setSpacing(14);
  for (const Setting& setting : SettingCatalogue::all()) {
    entries_.push_back({setting.tab, searchText(setting), [this, &setting] { return makeRow(setting); }});
  }
}

void SearchPage::addLink(SettingTab tab, const QString& title, const QString& synonyms) {
  const QString text = title + '\n' + synonyms + '\n' + SettingCatalogue::tr(SettingCatalogue::tabTitle(tab));
  const auto first = std::find_if(entries_.begin(), entries_.end(), [tab](const Entry& e) { return e.tab >= tab; });
  entries_.insert(first, {tab, text, [this, tab, title] { return makeLink(tab, title); }});
}

int SearchPage::search(const QString& typed) {
  const QStringList words = searchWords(typed);
  int count = 0;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    const bool found = !words.isEmpty() && containsWords(entries_[i].text, words);
    showEntry(i, found);
    count += found ? 1 : 0;
  }
  setSentence(*nothing_, count > 0 ? QString() : tr("Nothing found. Try another word, such as “glow” or “speed”."));
  return count;
}

void SearchPage::showEntry(std::size_t index, bool found) {
  Entry& entry = entries_[index];
  if (found && entry.row == nullptr) {
    entry.row = entry.make();
    const auto before = std::count_if(entries_.begin(), entries_.begin() + static_cast<std::ptrdiff_t>(index),
                                      [](const Entry& other) { return other.row != nullptr; });
    column().insertWidget(1 + static_cast<int>(before), entry.row);
  }
  if (entry.row != nullptr) entry.row->setVisible(found);
}

QWidget* SearchPage::makeRow(const Setting& setting) {
  auto* row = new QWidget(widget());
  auto* column = new QVBoxLayout(row);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(2);
  const QString place = tr("%1 › %2").arg(SettingCatalogue::tr(SettingCatalogue::tabTitle(setting.tab)),
                                          SettingCatalogue::tr(setting.group));
  column->addWidget(new SettingLabel(SettingLabel::Tone::help, place, row));
  column->addWidget(makeSettingControl(setting, editor_, row));
  return row;
}

QWidget* SearchPage::makeLink(SettingTab tab, const QString& title) {
  auto* row = new QWidget(widget());
  auto* column = new QVBoxLayout(row);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(2);
  const QString place = SettingCatalogue::tr(SettingCatalogue::tabTitle(tab));
  column->addWidget(new SettingLabel(SettingLabel::Tone::help, place, row));
  auto* line = new QHBoxLayout;
  line->addWidget(new SettingLabel(SettingLabel::Tone::title, title, row), 1);
  auto* button = new QPushButton(tr("Show"), row);
  button->setAccessibleName(tr("Show %1").arg(title));
  line->addWidget(button, 0, Qt::AlignTop);
  column->addLayout(line);
  connect(button, &QPushButton::clicked, this, [this, tab, title] { Q_EMIT cardWanted(tab, title); });
  return row;
}

}  // namespace veloria
