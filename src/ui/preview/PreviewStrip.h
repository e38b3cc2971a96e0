#pragma once

#include <QImage>
#include <QTimer>
#include <QWidget>
#include <functional>

#include "settings/NimbraConfig.h"
#include "ui/VisibilityWatch.h"
#include "ui/preview/PreviewPainter.h"

namespace veloria {

/// A live strip of the band, as wide as there is room. While it is seen it asks for the record before every frame and
/// has that drawn; otherwise it does nothing.
class PreviewStrip : public QWidget {
  Q_OBJECT

 public:
  static constexpr int heightPoints = 48;
  /// Frames are no larger than this, in pixels, and enlarged where there is more room: light is soft.
  static constexpr QSize maximumPixels{400, 48};
  /// A longer one would show everything slower than it is: the renderer moves on by 50 ms at most.
  static constexpr int intervalMs = 50;

  /// `config` is asked on the main thread. The painter must outlive the strip.
  PreviewStrip(PreviewPainter& painter, std::function<NimbraConfig()> config, QWidget* parent = nullptr);
  ~PreviewStrip() override;

  /// The last frame; null before the first one.
  const QImage& picture() const { return picture_; }

  QSize sizeHint() const override { return {maximumPixels.width(), heightPoints}; }
  QSize minimumSizeHint() const override { return {heightPoints, heightPoints}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void setRunning(bool on);
  void ask();
  void showPicture(const QImage& picture);
  QSize wantedPixels() const;
  void showFailure(const QString& reason);
  void setFailure(const QString& sentence, const QString& reason);

  PreviewPainter& painter_;
  std::function<NimbraConfig()> config_;
  QTimer timer_;
  QTimer settling_;  ///< frames keep their size while the window is dragged larger
  QSize pixels_;
  QImage picture_;
  QString failure_;
  VisibilityWatch watch_;
};

/// The pixels to draw for a strip of `points` on a screen with `ratio` pixels a point: its shape, within
/// PreviewStrip::maximumPixels.
QSize previewPixels(QSize points, double ratio);

}  // namespace veloria
