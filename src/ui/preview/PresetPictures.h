#pragma once

#include <QImage>
#include <QObject>
#include <array>

#include "settings/LookPreset.h"
#include "ui/preview/PreviewPainter.h"

namespace veloria {

/// A picture of each look preset, drawn once and kept. Main thread; the painter must outlive it.
class PresetPictures : public QObject {
  Q_OBJECT

 public:
  static constexpr QSize pixels{320, 96};

  explicit PresetPictures(PreviewPainter& painter, QObject* parent = nullptr);

  /// In the order of LookPreset::all(); null until it is drawn.
  const QImage& picture(int preset) const { return pictures_.at(static_cast<std::size_t>(preset)); }

  /// Draws the missing pictures.
  void draw();
  /// Stops; the next draw() continues.
  void pause();

 Q_SIGNALS:
  void drawn(int preset);

 private:
  PreviewPainter& painter_;
  std::array<QImage, std::tuple_size_v<std::remove_cvref_t<decltype(LookPreset::all())>>> pictures_;
  bool drawing_ = false;
};

}  // namespace veloria
