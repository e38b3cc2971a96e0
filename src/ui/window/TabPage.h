#pragma once

#include <QString>
#include <functional>
#include <vector>

#include "settings/SettingsEditor.h"
#include "ui/controls/SettingCatalogue.h"
#include "ui/window/SettingsPage.h"

namespace veloria {

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

}  // namespace veloria
