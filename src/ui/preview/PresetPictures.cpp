#include "ui/preview/PresetPictures.h"

#include <utility>

namespace veloria {

namespace {

constexpr double pictureScale = 1.5;

}  // namespace

PresetPictures::PresetPictures(PreviewPainter& painter, QObject* parent) : QObject(parent), painter_(painter) {
  connect(&painter_, &PreviewPainter::stillDrawn, this, [this](int preset, const QImage& picture) {
    pictures_.at(static_cast<std::size_t>(preset)) = picture;
    Q_EMIT drawn(preset);
  });
}

void PresetPictures::draw() {
  if (std::exchange(drawing_, true)) return;
  for (std::size_t i = 0; i < pictures_.size(); ++i) {
    if (!pictures_[i].isNull()) continue;
    painter_.drawStill({.id = static_cast<int>(i),
                        .config = choose(NimbraConfig(), LookPreset::all()[i]),
                        .pixels = pixels,
                        .pixelsPerPoint = pictureScale});
  }
}

void PresetPictures::pause() {
  drawing_ = false;
  painter_.cancelStills();
}

}  // namespace veloria
