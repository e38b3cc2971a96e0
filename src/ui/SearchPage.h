#pragma once

#include <map>
#include <vector>

#include "ui/SettingsEditor.h"
#include "ui/SettingsPage.h"
#include "ui/TabPage.h"

class QLabel;

namespace veloria {

/// What a search found: the controls themselves, each under the name of its place, and links to cards.
class SearchPage : public SettingsPage {
  Q_OBJECT

 public:
  SearchPage(SettingsEditor& editor, std::vector<CardPlacement> placements, QWidget* parent);

  /// Shows what has all the words in it, in the order of the tabs. How many there are.
  int search(const QString& typed);

 Q_SIGNALS:
  /// A person followed the link to a card.
  void cardWanted(int tab, const QString& title);

 private:
  struct Entry {
    QString text;                    ///< in which the words are looked for
    std::function<QWidget*()> make;  ///< made when it is found for the first time
    QWidget* row = nullptr;
  };
  void addSetting(const Setting& setting);
  void addLink(const CardPlacement& placement);
  QWidget* makeRow(const Setting& setting);
  QWidget* makeLink(const CardPlacement& placement);
  void showEntry(std::size_t index, bool found);

  SettingsEditor& editor_;
  std::vector<CardPlacement> placements_;
  std::vector<Entry> entries_;
  QLabel* nothing_;
};

}  // namespace veloria
