#include "ui/cards/PresetGallery.h"

#include <algorithm>

#include "ui/QtText.h"
#include "ui/controls/Tile.h"

namespace veloria {

namespace {

constexpr int pictureHeight = 56;

/// Shown until the preset's picture is drawn.
Palette paletteOf(const LookPreset& preset) {
  return choose(NimbraConfig(), preset).palette();
}

}  // namespace

PresetGallery::PresetGallery(SettingsEditor& editor, PresetPictures& pictures, QWidget* parent)
    : Card(tr("Looks"), parent),
      editor_(editor),
      pictures_(pictures),
      watch_(this, [this](bool seen) { setSeen(seen); }) {
  auto* tiles = new QWidget(this);
  auto* layout = new TileLayout(TileLayout::Width::fill, tiles);
  for (int i = 0; i < static_cast<int>(LookPreset::all().size()); ++i) {
    tiles_.push_back(makeTile(i, tiles));
    layout->addWidget(tiles_.back());
  }
  body().addWidget(tiles);
  connect(&pictures_, &PresetPictures::drawn, this,
          [this](int preset) { tiles_.at(static_cast<std::size_t>(preset))->setPicture(pictures_.picture(preset)); });
  subscription_ = editor_.subscribe([this](const NimbraConfig& config) { mark(config); });
}

PresetGallery::~PresetGallery() {
  if (watch_.seen()) pictures_.pause();
}

void PresetGallery::setSeen(bool seen) {
  if (seen) return pictures_.draw();
  pictures_.pause();
}

Tile* PresetGallery::makeTile(int preset, QWidget* parent) {
  const LookPreset& look = LookPreset::all().at(static_cast<std::size_t>(preset));
  auto* tile =
      new Tile(translated("LookPreset", look.name), translated("LookPreset", look.description), pictureHeight, parent);
  tile->setObjectName(toQString(look.name));
  tile->setColors(paletteOf(look));
  tile->setPicture(pictures_.picture(preset));
  connect(tile, &Tile::clicked, this, [this, &look] { editor_.choosePreset(look); });
  return tile;
}

void PresetGallery::mark(const NimbraConfig& config) {
  for (std::size_t i = 0; i < tiles_.size(); ++i) {
    tiles_[i]->setChecked(config == choose(config, LookPreset::all().at(i)));
  }
}

}  // namespace veloria
