#pragma once

#include <QImage>
#include <QTimer>
#include <QWidget>
#include <functional>

#include "settings/NimbraConfig.h"
#include "ui/VisibilityWatch.h"
#include "ui/preview/PreviewPainter.h"

namespace veloria {

/// A live preview of the band, as wide as its space. While visible it reads the record before each frame; otherwise it
/// does nothing.
class PreviewStrip : public QWidget {
  Q_OBJECT

 public:
  static constexpr int heightPoints = 48;
  /// The largest frame in pixels. Larger previews are scaled up, which soft light hides.
  static constexpr QSize maximumPixels{400, 48};
  /// The renderer advances by 50 ms at most, so a longer interval would slow the preview down.
  static constexpr int intervalMs = 50;

  /// `config` is called on the main thread. The painter must outlive the strip.
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
  QTimer settling_;  ///< frames keep their size while the window is resized
  QSize pixels_;
  QImage picture_;
  QString failure_;
  VisibilityWatch watch_;
};

/// The frame size for a strip of `points` at `ratio` pixels per point: the same shape, within
/// PreviewStrip::maximumPixels.
QSize previewPixels(QSize points, double ratio);

}  // namespace veloria
