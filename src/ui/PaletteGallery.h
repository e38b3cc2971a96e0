#pragma once

#include <QCheckBox>
#include <vector>

#include "settings/SettingsEditor.h"
#include "ui/Card.h"
#include "ui/Tile.h"

namespace veloria {

/// The built-in palettes to choose from, one's own once there is one, and the wish to follow the desktop picture
/// instead.
class PaletteGallery : public Card {
  Q_OBJECT

 public:
  /// The editor must outlive it.
  explicit PaletteGallery(SettingsEditor& editor, QWidget* parent = nullptr);

 private:
  Tile* makeTile(const Palette& palette, QWidget* parent);
  Tile* makeOwnTile(QWidget* parent);
  void showRecord(const NimbraConfig& config);

  SettingsEditor& editor_;
  QCheckBox* wallpaper_;
  std::vector<Tile*> tiles_;
  Tile* own_;
  Subscription subscription_;
};

}  // namespace veloria
