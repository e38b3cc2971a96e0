#pragma once

#include <QScrollArea>
#include <QString>
#include <QStringList>
#include <QVBoxLayout>
#include <functional>
#include <vector>

#include "settings/SettingsEditor.h"
#include "ui/controls/SettingCatalogue.h"

class QLabel;

namespace veloria {

/// A page that scrolls up and down, never sideways.
class SettingsPage : public QScrollArea {
  Q_OBJECT

 public:
  explicit SettingsPage(QWidget* parent);

  /// What scrolls.
  QVBoxLayout& column() { return *column_; }

 private:
  QVBoxLayout* column_;
};

/// A card of its own kind, and where it belongs.
struct CardPlacement {
  SettingTab tab{};
  /// The English title of the group of ordinary controls that it follows; null: above all of them. Cards of one place
  /// stand in the order in which they were added.
  const char* afterGroup = nullptr;
  QString title;     ///< as people read it; the search finds it by this and its synonyms. Empty: not to be searched for
  QString synonyms;  ///< other words for it, may be empty
  /// Makes it, when its tab is about to be seen for the first time. The page becomes its parent.
  std::function<QWidget*()> make;
};

/// One tab: its cards, and its ordinary settings in a card for each group. It is empty until it is built. Main
/// thread; the editor must outlive it.
class TabPage : public SettingsPage {
  Q_OBJECT

 public:
  TabPage(SettingTab tab, SettingsEditor& editor, QWidget* parent);

  /// Before it is built.
  void addCard(CardPlacement placement);

  /// Makes what is in it, unless that is there already: before it is shown for the first time.
  void build();

  /// Scrolls to a card, by its title.
  void showCard(const QString& title);

 private:
  void addCardsAfter(const char* group);
  void addGroups();

  SettingTab tab_;
  SettingsEditor& editor_;
  std::vector<CardPlacement> placements_;
  std::vector<std::pair<QString, QWidget*>> cards_;
  bool built_ = false;
};

/// What a person typed into the search field, as words: case and accents don't count, nor do the words' order and the
/// space around them.
QStringList searchWords(const QString& typed);

/// Whether each of the words is somewhere in the text.
bool containsWords(const QString& text, const QStringList& words);

/// All in which a setting is looked for: its key, and its title, help, group, tab, choices and synonyms both in the
/// person's language and in English.
QString searchText(const Setting& setting);

/// What a search found: the controls themselves, each under the name of its place, and links to cards.
class SearchPage : public SettingsPage {
  Q_OBJECT

 public:
  SearchPage(SettingsEditor& editor, QWidget* parent);

  /// Makes a card findable.
  void addLink(SettingTab tab, const QString& title, const QString& synonyms);

  /// Shows what has all the words in it, in the order of the tabs. How many there are.
  int search(const QString& typed);

 Q_SIGNALS:
  /// A person followed the link to a card.
  void cardWanted(veloria::SettingTab tab, const QString& title);

 private:
  struct Entry {
    SettingTab tab{};
    QString text;                    ///< in which the words are looked for
    std::function<QWidget*()> make;  ///< made when it is found for the first time
    QWidget* row = nullptr;
  };
  QWidget* makeRow(const Setting& setting);
  QWidget* makeLink(SettingTab tab, const QString& title);
  void showEntry(std::size_t index, bool found);

  SettingsEditor& editor_;
  std::vector<Entry> entries_;
  QLabel* nothing_;
};

}  // namespace veloria
