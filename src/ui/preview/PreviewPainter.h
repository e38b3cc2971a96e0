#pragma once

#include <QImage>
#include <QObject>
#include <QSize>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

#include "settings/NimbraConfig.h"
#include "ui/preview/PreviewGpu.h"

class QThread;

namespace veloria {

/// A picture of the band after some time on a clock of its own: the same record gives the same picture.
struct PreviewStill {
  int id = 0;  ///< passed back with the picture
  NimbraConfig config;
  QSize pixels;
  double pixelsPerPoint = 1;
  double seconds = 3;
  double framesPerSecond = 20;
};

/// Draws the settings window's pictures on its own thread and GPU device. The device exists only while something is
/// wanted. After a GPU failure there are no pictures until all requests have been stopped and made again. Use it on the
/// main thread, where its signals arrive; only the destructor waits.
class PreviewPainter : public QObject {
  Q_OBJECT

 public:
  explicit PreviewPainter(PreviewGpuFactory factory, QObject* parent = nullptr);
  /// Waits for the frame that is being drawn.
  ~PreviewPainter() override;

  /// Draws the next frame of a clip that runs on the wall clock. A newer request replaces one that is still waiting.
  void drawFrame(const NimbraConfig& config, QSize pixels, double pixelsPerPoint);
  void stopFrames();

  /// Draws a picture between the frames. Several are drawn in turn.
  void drawStill(const PreviewStill& still);
  /// Drops the stills that are not drawn yet.
  void cancelStills();

 Q_SIGNALS:
  void frameDrawn(const QImage& picture);
  void stillDrawn(int id, const QImage& picture);
  /// Drawing failed, and why.
  void failed(const QString& reason);

 private:
  struct Frame {
    NimbraConfig config;
    QSize pixels;
    double pixelsPerPoint = 1;
  };
  struct Job {
    std::uint64_t number = 0;
    PreviewStill still;
  };
  class Canvases;
  enum class Task { frame, still, release, quit };

  void start();
  void run();
  Task next(bool hasCanvases, Task last);
  bool nothingWanted() const { return !framesWanted_ && jobs_.empty(); }
  void serve(Task task, Canvases& canvases);
  void serveFrame(Canvases& canvases);
  void serveStill(Canvases& canvases);
  void giveUp(const QString& reason);

  PreviewGpuFactory factory_;
  std::unique_ptr<QThread> thread_;

  std::mutex lock_;  // guards the rest
  std::condition_variable wanted_;
  std::optional<Frame> frame_;
  bool framesWanted_ = false;
  std::deque<Job> jobs_;
  std::uint64_t jobCount_ = 0;
  bool gaveUp_ = false;  // until nothing is wanted
  bool quitting_ = false;
};

}  // namespace veloria
