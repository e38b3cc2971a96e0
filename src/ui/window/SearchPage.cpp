#include "ui/window/SearchPage.h"

#include <QPushButton>
#include <algorithm>

#include "ui/cards/Card.h"
#include "ui/controls/SettingControl.h"
#include "ui/controls/SettingLabel.h"
#include "ui/controls/SettingSearch.h"

namespace veloria {

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
