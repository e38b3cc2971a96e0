#pragma once

#include <cstdint>
#include <mutex>

#include "base/MediaClock.h"

namespace veloria {

/// Smoothed figures about drawing, for people. Any thread.
class RenderStats {
 public:
  struct Figures {
    double gpuMsAvg = 0;
    double fpsAvg = 0;            ///< the mean of the moments' rates: frames that come in pairs raise it
    double frameIntervalAvg = 0;  ///< seconds between frames; its inverse is what a person would count
    std::int64_t gridW = 0;
    std::int64_t gridH = 0;
  };

  explicit RenderStats(MediaClock clock = mediaTime);

  /// The process-wide figures.
  static RenderStats& shared();

  /// Notes a finished frame that took `gpuSeconds` on the GPU: exponential averages with a weight of 0.08.
  void recordFrame(double gpuSeconds);
  void setGrid(std::int64_t width, std::int64_t height);
  Figures figures() const;

 private:
  MediaClock clock_;
  mutable std::mutex lock_;
  Figures figures_;
  double lastPresent_ = 0;
};

}  // namespace veloria
