#include "render/RenderStats.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace veloria {

namespace {

void smooth(double& average, double value) {
  average = average == 0 ? value : 0.08 * value + 0.92 * average;
}

}  // namespace

RenderStats::RenderStats(MediaClock clock) : clock_(std::move(clock)) {
  shown_.fill(-std::numeric_limits<double>::infinity());
}

RenderStats& RenderStats::shared() {
  static RenderStats stats;
  return stats;
}

void RenderStats::recordFrame(double gpuSeconds) {
  const std::lock_guard guard(lock_);
  const double ms = gpuSeconds * 1000;
  if (ms > 0.001) smooth(figures_.gpuMsAvg, ms);
  const double now = clock_();
  const double interval = now - lastPresent_;
  if (lastPresent_ > 0 && interval > 0.0005 && interval < 1.0) smooth(figures_.fpsAvg, 1 / interval);
  lastPresent_ = now;
  shown_[next_] = now;
  next_ = (next_ + 1) % mostFrames;
}

void RenderStats::setGrid(std::int64_t width, std::int64_t height) {
  const std::lock_guard guard(lock_);
  figures_.gridW = width;
  figures_.gridH = height;
}

RenderStats::Figures RenderStats::figures() const {
  const std::lock_guard guard(lock_);
  Figures figures = figures_;
  const double aSecondAgo = clock_() - 1;
  figures.fps = static_cast<int>(std::ranges::count_if(shown_, [&](double time) { return time > aSecondAgo; }));
  return figures;
}

}  // namespace veloria
