#include "ui/preview/PreviewPainter.h"

#include <QThread>
#include <algorithm>
#include <cmath>
#include <exception>
#include <stdexcept>
#include <utility>

#include "ui/preview/PreviewCanvas.h"

namespace veloria {

/// What the thread holds while something is wanted.
class PreviewPainter::Canvases {
 public:
  explicit Canvases(PreviewGpu gpu) : gpu_(std::move(gpu)) {
    if (gpu_.device == nullptr || gpu_.library == nullptr) throw std::runtime_error("no device");
  }

  QImage frame(const Frame& frame) {
    if (!frames_) frames_ = std::make_unique<PreviewCanvas>(gpu_);
    return frames_->draw(frame.config, frame.pixels, frame.pixelsPerPoint);
  }
  void endFrames() { frames_.reset(); }

  /// Draws the next frame of a still; the picture, when it was the last.
  std::optional<QImage> advance(const Job& job) {
    if (job.number != stillNumber_) beginStill(job);
    const PreviewStill& still = job.still;
    stillTime_ += 1 / still.framesPerSecond;
    QImage picture = still_->draw(still.config, still.pixels, still.pixelsPerPoint);
    if (++stillFrames_ < std::lround(still.seconds * still.framesPerSecond)) return std::nullopt;
    endStill();
    return picture;
  }
  void endStill() {
    still_.reset();
    stillNumber_ = 0;
  }

 private:
  void beginStill(const Job& job) {
    still_ = std::make_unique<PreviewCanvas>(gpu_, [this] { return stillTime_; });
    stillNumber_ = job.number;
    stillTime_ = 1;
    stillFrames_ = 0;
  }

  PreviewGpu gpu_;
  std::unique_ptr<PreviewCanvas> frames_;
  double stillTime_ = 0;
  std::uint64_t stillNumber_ = 0;
  long stillFrames_ = 0;
  std::unique_ptr<PreviewCanvas> still_;
};

PreviewPainter::PreviewPainter(PreviewGpuFactory factory, QObject* parent)
    : QObject(parent), factory_(std::move(factory)) {}

PreviewPainter::~PreviewPainter() {
  if (!thread_) return;
  {
    const std::lock_guard guard(lock_);
    quitting_ = true;
  }
  wanted_.notify_one();
  thread_->wait();
}

void PreviewPainter::start() {
  if (thread_) return;
  thread_.reset(QThread::create([this] { run(); }));
  thread_->setObjectName(QStringLiteral("preview"));
  thread_->start();
}

void PreviewPainter::drawFrame(const NimbraConfig& config, QSize pixels, double pixelsPerPoint) {
  if (pixels.isEmpty()) return;
  {
    const std::lock_guard guard(lock_);
    frame_ = Frame{config, pixels, pixelsPerPoint};
    framesWanted_ = true;
  }
  start();
  wanted_.notify_one();
}

void PreviewPainter::stopFrames() {
  {
    const std::lock_guard guard(lock_);
    frame_.reset();
    framesWanted_ = false;
  }
  wanted_.notify_one();
}

void PreviewPainter::drawStill(const PreviewStill& still) {
  if (still.pixels.isEmpty()) return;
  {
    const std::lock_guard guard(lock_);
    jobs_.push_back({++jobCount_, still});
  }
  start();
  wanted_.notify_one();
}

void PreviewPainter::cancelStills() {
  {
    const std::lock_guard guard(lock_);
    jobs_.clear();
  }
  wanted_.notify_one();
}

void PreviewPainter::run() {
  std::unique_ptr<Canvases> canvases;
  for (Task task = Task::still; (task = next(canvases != nullptr, task)) != Task::quit;) {
    try {
      if (task == Task::release) {
        canvases.reset();
      } else {
        if (!canvases) canvases = std::make_unique<Canvases>(factory_());
        serve(task, *canvases);
      }
    } catch (const std::exception& error) {
      canvases.reset();
      giveUp(QString::fromUtf8(error.what()));
    }
  }
}

/// Waits for something to do. Frames and stills take turns where both are wanted.
PreviewPainter::Task PreviewPainter::next(bool hasCanvases, Task last) {
  std::unique_lock guard(lock_);
  for (;; wanted_.wait(guard)) {
    if (quitting_) return Task::quit;
    if (nothingWanted()) {
      gaveUp_ = false;
      if (hasCanvases) return Task::release;
    }
    if (gaveUp_) continue;
    if (frame_ && (last != Task::frame || jobs_.empty())) return Task::frame;
    if (!jobs_.empty()) return Task::still;
  }
}

void PreviewPainter::serve(Task task, Canvases& canvases) {
  if (task == Task::frame) return serveFrame(canvases);
  serveStill(canvases);
}

void PreviewPainter::serveFrame(Canvases& canvases) {
  std::optional<Frame> frame;
  {
    const std::lock_guard guard(lock_);
    frame = std::exchange(frame_, std::nullopt);
  }
  if (frame) Q_EMIT frameDrawn(canvases.frame(*frame));
}

void PreviewPainter::serveStill(Canvases& canvases) {
  std::optional<Job> job;
  bool frames = false;
  {
    const std::lock_guard guard(lock_);
    if (!jobs_.empty()) job = jobs_.front();
    frames = framesWanted_;
  }
  if (!frames) canvases.endFrames();
  if (!job) return canvases.endStill();
  const auto picture = canvases.advance(*job);
  if (!picture) return;
  const std::lock_guard guard(lock_);
  if (jobs_.empty() || jobs_.front().number != job->number) return;
  jobs_.pop_front();
  Q_EMIT stillDrawn(job->still.id, *picture);
}

void PreviewPainter::giveUp(const QString& reason) {
  {
    const std::lock_guard guard(lock_);
    gaveUp_ = true;
  }
  Q_EMIT failed(reason);
}

}  // namespace veloria
