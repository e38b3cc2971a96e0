#pragma once

#include <vector>

#include "settings/SettingsEditor.h"
#include "ui/VisibilityWatch.h"
#include "ui/cards/Card.h"
#include "ui/controls/Tile.h"
#include "ui/preview/PresetPictures.h"

namespace veloria {

/// The look presets, each as a picture of itself. Choosing one puts its look into the record; the one that the record
/// has is marked. Pictures that are missing are drawn while the gallery is seen.
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
