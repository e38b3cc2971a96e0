#pragma once

#include <QCheckBox>
#include <vector>

#include "settings/SettingsEditor.h"
#include "ui/cards/Card.h"
#include "ui/cards/Readouts.h"
#include "ui/controls/Tile.h"

namespace veloria {

/// The built-in palettes, the user's own if there is one, and a switch to match the wallpaper instead.
class PaletteGallery : public Card {
  Q_OBJECT

 public:
  /// The editor must outlive it.
  explicit PaletteGallery(SettingsEditor& editor, QWidget* parent = nullptr);

  /// Shows from now on why the wallpaper gives no colours. The ticker must outlive this.
  void follow(ReadoutTicker& ticker);

 private:
  Tile* makeTile(const Palette& palette, QWidget* parent);
  Tile* makeOwnTile(QWidget* parent);
  void showRecord(const NimbraConfig& config);

  SettingsEditor& editor_;
  QCheckBox* wallpaper_;
  QLabel* pictureProblem_;
  std::vector<Tile*> tiles_;
  Tile* own_;
  Subscription subscription_;
  Subscription readouts_;
};

}  // namespace veloria
