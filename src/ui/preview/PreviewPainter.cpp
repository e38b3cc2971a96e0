#include "ui/preview/PreviewPainter.h"

#include <QImage>
#include <QSize>
#include <QThread>
#include <algorithm>
#include <cmath>
#include <exception>
#include <optional>
#include <stdexcept>
#include <utility>

#include "base/MediaClock.h"
#include "render/FramePlan.h"
#include "render/NimbraRenderer.h"
#include "render/OffscreenTarget.h"

namespace veloria {

namespace {

constexpr double maximumQuality = 0.5;
constexpr std::int64_t maximumPressureIterations = 24;

gpu::Size gpuSize(QSize pixels) {
  return {static_cast<std::uint32_t>(pixels.width()), static_cast<std::uint32_t>(pixels.height())};
}

StripGeometry stripOf(QSize pixels, double pixelsPerPoint) {
  StripGeometry strip;
  strip.windowFrame = {0, 0, pixels.width() / pixelsPerPoint, pixels.height() / pixelsPerPoint};
  strip.menuBarHeight = strip.windowFrame.height;
  strip.backingScale = pixelsPerPoint;
  return strip;
}

/// The look alone, without what belongs to a screen, and not more work than a small picture is worth.
NimbraConfig previewConfig(NimbraConfig config) {
  config.layerMode = LayerMode::desktopStrip;
  config.preserveMenuBarText = false;
  config.notchMode = NotchMode::ignore;
  config.pointerMode = PointerMode::none;
  config.quality = std::min(config.quality, maximumQuality);
  config.pressureIterations = std::min(config.pressureIterations, maximumPressureIterations);
  return config;
}

/// Draws the band of a record into pictures.
class PreviewCanvas {
 public:
  /// Throws what NimbraRenderer's constructor throws.
  explicit PreviewCanvas(PreviewGpu& gpu, MediaClock clock = mediaTime)
      : gpu_(gpu), stats_(clock), renderer_(*gpu.device, *gpu.library, stats_, clock) {}

  /// The next frame, with nothing behind the band. Another size starts a new fluid. Throws gpu::DeviceError.
  QImage draw(const NimbraConfig& config, QSize pixels, double pixelsPerPoint) {
    renderer_.config = previewConfig(config);
    setSize(pixels, pixelsPerPoint);
    renderer_.draw(*target_);
    const auto rows = target_->pixels();
    constexpr auto format = QImage::Format_RGBA8888_Premultiplied;
    return QImage(rows.data(), pixels.width(), pixels.height(), pixels.width() * 4, format).copy();
  }

 private:
  void setSize(QSize pixels, double pixelsPerPoint) {
    const gpu::Size wanted = gpuSize(pixels);
    if (!target_ || target_->drawableSize() != wanted) target_.emplace(*gpu_.device, wanted);
    renderer_.geometry = stripOf(pixels, pixelsPerPoint);
    renderer_.resizeTargets(wanted);
    const GridSize grid = gridSizeFor(wanted, renderer_.config.quality, renderer_.config.verticalStretch);
    if (std::exchange(grid_, grid) != grid) renderer_.resizeSimGrid(wanted);
  }

  PreviewGpu& gpu_;
  RenderStats stats_;
  NimbraRenderer renderer_;
  std::optional<OffscreenTarget> target_;
  GridSize grid_;
};

}  // namespace

/// What the thread keeps while something is wanted.
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

  /// Draws the next frame of a still; returns the picture after the last.
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

/// Waits for something to do. Frames and stills take turns if both are wanted.
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
