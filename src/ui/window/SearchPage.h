#pragma once

#include <functional>
#include <vector>

#include "settings/SettingsEditor.h"
#include "ui/controls/SettingCatalogue.h"
#include "ui/window/SettingsPage.h"

class QLabel;

namespace veloria {

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
