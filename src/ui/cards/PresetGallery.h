#pragma once

#include <vector>

#include "settings/SettingsEditor.h"
#include "ui/VisibilityWatch.h"
#include "ui/cards/Card.h"
#include "ui/controls/Tile.h"
#include "ui/preview/PresetPictures.h"

namespace veloria {

/// The look presets as pictures. Choosing one applies it to the record; the one in use is marked. Missing pictures are
/// drawn while the gallery is visible.
class PresetGallery : public Card {
  Q_OBJECT

 public:
  /// Both must outlive it.
  PresetGallery(SettingsEditor& editor, PresetPictures& pictures, QWidget* parent = nullptr);
  ~PresetGallery() override;

 private:
  Tile* makeTile(int preset, QWidget* parent);
  void mark(const NimbraConfig& config);
  void setSeen(bool seen);

  SettingsEditor& editor_;
  PresetPictures& pictures_;
  std::vector<Tile*> tiles_;
  Subscription subscription_;
  VisibilityWatch watch_;
};

}  // namespace veloria
