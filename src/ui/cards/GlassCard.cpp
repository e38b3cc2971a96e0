#include "ui/cards/GlassCard.h"

#include <QPushButton>

#include "settings/LookPreset.h"
#include "ui/QtText.h"
#include "ui/controls/Tile.h"

namespace veloria {

GlassCard::GlassCard(SettingsEditor& editor, QWidget* parent) : Card(tr("Glass compensation"), parent) {
  body().addWidget(
      makeSentence(tr("Boosts the current look for translucent bars. Use the tinted one if your bar darkens "
                      "what is behind it."),
                   this));
  auto* buttons = new QWidget(this);
  auto* layout = new TileLayout(TileLayout::Width::natural, buttons);
  for (const GlassTuning& tuning : GlassTuning::all()) {
    auto* button = new QPushButton(translated("GlassTuning", tuning.title), buttons);
    button->setObjectName(toQString(tuning.title));
    layout->addWidget(button);
    connect(button, &QPushButton::clicked, this,
            [&editor, &tuning] { editor.change(tuning.title, [&](NimbraConfig& config) { tuning.apply(config); }); });
  }
  body().addWidget(buttons);
}

}  // namespace veloria
