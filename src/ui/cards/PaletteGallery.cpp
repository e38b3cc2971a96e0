#include "ui/cards/PaletteGallery.h"

#include "ui/QtText.h"
#include "ui/controls/SettingLabel.h"
#include "ui/controls/Tile.h"

namespace veloria {

namespace {

constexpr int gradientHeight = 28;

}  // namespace

PaletteGallery::PaletteGallery(SettingsEditor& editor, QWidget* parent)
    : Card(tr("Palette"), parent),
      editor_(editor),
      wallpaper_(new QCheckBox(this)),
      pictureProblem_(makeSentence({}, this)) {
  wallpaper_->setObjectName(QStringLiteral("matchWallpaper"));
  body().addLayout(
      makeButtonRow(*wallpaper_, tr("Match the wallpaper"),
                    tr("Takes the colours from your wallpaper. The palette below is used when there is none."), *this));
  body().addWidget(pictureProblem_);
  auto* tiles = new QWidget(this);
  auto* layout = new TileLayout(TileLayout::Width::fill, tiles);
  for (const Palette& palette : Palette::presets()) {
    tiles_.push_back(makeTile(palette, tiles));
    layout->addWidget(tiles_.back());
  }
  own_ = makeOwnTile(tiles);
  layout->addWidget(own_);
  body().addWidget(tiles);
  connect(wallpaper_, &QCheckBox::clicked, this, [this](bool on) {
    editor_.change("matchWallpaper", [on](NimbraConfig& config) { config.matchWallpaper = on; });
  });
  subscription_ = editor_.subscribe([this](const NimbraConfig& config) { showRecord(config); });
}

void PaletteGallery::follow(ReadoutTicker& ticker) {
  readouts_ = ticker.subscribe(
      [this](const Readouts& readouts) { setSentence(*pictureProblem_, breakable(toQString(readouts.picture))); });
}

Tile* PaletteGallery::makeTile(const Palette& palette, QWidget* parent) {
  auto* tile = new Tile(translated("Palette", palette.name), {}, gradientHeight, parent);
  tile->setObjectName(toQString(palette.name));
  tile->setColors(palette);
  connect(tile, &Tile::clicked, this, [this, &palette] { editor_.choosePalette(palette.name); });
  return tile;
}

Tile* PaletteGallery::makeOwnTile(QWidget* parent) {
  auto* tile = new Tile(tr("Your own"), {}, gradientHeight, parent);
  tile->setObjectName(QStringLiteral("ownPalette"));
  connect(tile, &Tile::clicked, this, [this] { editor_.useOwnPalette(); });
  return tile;
}

void PaletteGallery::showRecord(const NimbraConfig& config) {
  wallpaper_->setChecked(config.matchWallpaper);
  for (std::size_t i = 0; i < tiles_.size(); ++i) {
    tiles_[i]->setChecked(!config.customPalette && config.palette().name == Palette::presets()[i].name);
  }
  const auto& own = editor_.ownPalette();
  own_->setVisible(own.has_value());
  own_->setChecked(config.customPalette.has_value());
  if (own) own_->setColors(*own);
}

}  // namespace veloria
