#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "base/MediaClock.h"

namespace veloria {

/// Figures about drawing, for people. Any thread.
class RenderStats {
 public:
  struct Figures {
    double gpuMsAvg = 0;
    double fpsAvg = 0;  ///< the mean of 1 / interval; frames that come in pairs raise it
    int fps = 0;        ///< frames in the last second; at most mostFrames
    std::int64_t gridW = 0;
    std::int64_t gridH = 0;
  };

  /// More than a band shows in a second.
  static constexpr std::size_t mostFrames = 256;

  explicit RenderStats(MediaClock clock = mediaTime);

  /// The process-wide figures.
  static RenderStats& shared();

  /// Notes a frame that was shown now and took `gpuSeconds` on the GPU: exponential averages with a weight of 0.08.
  void recordFrame(double gpuSeconds);
  void setGrid(std::int64_t width, std::int64_t height);
  Figures figures() const;

 private:
  MediaClock clock_;
  mutable std::mutex lock_;
  Figures figures_;
  double lastPresent_ = 0;
  std::array<double, mostFrames> shown_;  // when the last frames were, in turn
  std::size_t next_ = 0;
};

}  // namespace veloria
