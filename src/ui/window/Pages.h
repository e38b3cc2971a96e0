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

  /// The content.
  QVBoxLayout& column() { return *column_; }

 private:
  QVBoxLayout* column_;
};

/// A card that is not made from the catalogue, and its place.
struct CardPlacement {
  SettingTab tab{};
  /// The English title of the catalogue group that it follows; null: it comes first. Cards in the same place keep the
  /// order in which they were added.
  const char* afterGroup = nullptr;
  QString title;     ///< shown, and searched together with the synonyms; empty: not searchable
  QString synonyms;  ///< other words for it, may be empty
  /// Called before its tab is first shown. The page becomes the parent.
  std::function<QWidget*()> make;
};

/// One tab: its own cards, and a card for each group of the catalogue. Empty until build(). Main thread; the editor
/// must outlive it.
class TabPage : public SettingsPage {
  Q_OBJECT

 public:
  TabPage(SettingTab tab, SettingsEditor& editor, QWidget* parent);

  /// Only before build().
  void addCard(CardPlacement placement);

  /// Creates the content; further calls do nothing. Call it before the tab is first shown.
  void build();

  /// Scrolls to the card with this title.
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

/// Splits a search into words, without case and accents.
QStringList searchWords(const QString& typed);

/// Whether the text contains each of the words.
bool containsWords(const QString& text, const QStringList& words);

/// The text by which a setting is found: its key, and its title, help, group, tab, choices and synonyms, both
/// translated and in English.
QString searchText(const Setting& setting);

/// The results of a search: the controls themselves, each below the name of its place, and links to cards.
class SearchPage : public SettingsPage {
  Q_OBJECT

 public:
  SearchPage(SettingsEditor& editor, QWidget* parent);

  /// Adds a card to the search.
  void addLink(SettingTab tab, const QString& title, const QString& synonyms);

  /// Shows everything that contains all the words, in tab order, and returns how many there are.
  int search(const QString& typed);

 Q_SIGNALS:
  /// The user followed a link to a card.
  void cardWanted(veloria::SettingTab tab, const QString& title);

 private:
  struct Entry {
    SettingTab tab{};
    QString text;                    ///< searched for the words
    std::function<QWidget*()> make;  ///< called when it is first found
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
