#pragma once

#include <QString>
#include <functional>
#include <vector>

#include "ui/SettingCatalogue.h"
#include "ui/SettingsEditor.h"
#include "ui/SettingsPage.h"

namespace veloria {

/// A card of its own kind, and where it belongs.
struct CardPlacement {
  SettingTab tab{};
  QString title;     ///< as people read it; the search finds it by this and its synonyms
  QString synonyms;  ///< other words for it, may be empty
  /// Makes it, when its tab is opened for the first time. The page becomes its parent. May return null: no card.
  std::function<QWidget*()> make;
  /// The English title of the group of ordinary controls that it follows; null: above all of them.
  const char* afterGroup = nullptr;
};

/// One tab: its cards, and its ordinary settings in a card for each group. It is built when it is first shown. Main
/// thread; the editor must outlive it.
class TabPage : public SettingsPage {
  Q_OBJECT

 public:
  TabPage(SettingTab tab, SettingsEditor& editor, std::vector<CardPlacement> placements, QWidget* parent);

  /// Scrolls to a card, by its title.
  void showCard(const QString& title);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void build();
  void addCardsAfter(const char* group);
  void addGroups();

  SettingTab tab_;
  SettingsEditor& editor_;
  std::vector<CardPlacement> placements_;
  std::vector<std::pair<QString, QWidget*>> cards_;
  bool built_ = false;
};

}  // namespace veloria
