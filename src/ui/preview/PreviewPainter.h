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

/// A picture of a record's band as it is after some time, on a clock of its own: the same record, the same picture.
struct PreviewStill {
  int id = 0;  ///< comes back with the picture
  NimbraConfig config;
  QSize pixels;
  double pixelsPerPoint = 1;
  double seconds = 3;
  double framesPerSecond = 20;
};

/// Draws the settings window's pictures on a thread with a GPU device of its own. Both are there only while something
/// is wanted; a GPU that can't be had, or is lost, means no pictures until everything was stopped and is asked for
/// again. Its functions are called, and its signals come, on the main thread, and none of them waits but the
/// destructor.
class PreviewPainter : public QObject {
  Q_OBJECT

 public:
  explicit PreviewPainter(PreviewGpuFactory factory, QObject* parent = nullptr);
  /// Waits for the frame that is being drawn.
  ~PreviewPainter() override;

  /// Draws one frame of a clip that goes on from frame to frame on the wall clock. Only the newest record that waits is
  /// drawn.
  void drawFrame(const NimbraConfig& config, QSize pixels, double pixelsPerPoint);
  void stopFrames();

  /// Draws a picture between the frames. Several are drawn in turn.
  void drawStill(const PreviewStill& still);
  /// Those not yet drawn never are.
  void cancelStills();

 Q_SIGNALS:
  void frameDrawn(const QImage& picture);
  void stillDrawn(int id, const QImage& picture);
  /// There are no pictures, and why.
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
