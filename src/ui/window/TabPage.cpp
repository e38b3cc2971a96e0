#include "ui/window/TabPage.h"

#include <QTimer>
#include <string_view>
#include <utility>

#include "ui/cards/Card.h"
#include "ui/controls/SettingControl.h"

namespace veloria {

namespace {

bool sameText(const char* a, const char* b) {
  if (a == nullptr || b == nullptr) return a == b;
  return std::string_view(a) == b;
}

}  // namespace

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

}  // namespace veloria
