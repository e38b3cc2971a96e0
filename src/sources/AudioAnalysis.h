#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "sources/AudioBands.h"

namespace veloria {

/// Turns samples into bands. One thread at a time; no locks, and no allocation once the largest delivery was seen.
///
/// The numbers follow this convention: with N = 1024, samples x[n] and the Hann window w[n] = (1 - cos(2 pi n / N)) /
/// 2, the magnitude of bin k is m[k] = 2 |X[k]|, where X[k] = sum over n of x[n] w[n] exp(-2 pi i k n / N),
/// unnormalised. A sine of amplitude a exactly on bin k so has m[k] = a N / 2 and half of that on each side. Bins
/// are 46.875 Hz wide at 48 kHz; the rate itself is not looked at.
///
///     band  = min(0.75 log10(1 + mean of m over its bins * gain / N), 1)
///     bass: bins 1...5, gain 55    mid: 5...42, gain 90    treble: 42...256, gain 150
///     level = min(0.75 log10(1 + 14 rms), 1)                       of the samples without the window
///     beat  = min(4 max(bass - average, 0), 1), then average += 0.08 (bass - average)
class AudioAnalysis {
 public:
  static constexpr std::size_t blockSize = 1024;

  AudioAnalysis();
  ~AudioAnalysis();
  AudioAnalysis(const AudioAnalysis&) = delete;
  AudioAnalysis& operator=(const AudioAnalysis&) = delete;

  /// Folds the channels to one (each further channel is averaged with the result so far, as far as it reaches) and
  /// keeps the samples until there are 1024. Then the newest 1024 are analysed and all others forgotten. A sample that
  /// is not a number or infinite counts as 0, and none counts as more than 1024 times full scale.
  std::optional<AudioBands> add(std::span<const std::span<const float>> channels);

  /// Forgets samples and average.
  void reset();

 private:
  struct Workspace;

  void fold(std::span<const std::span<const float>> channels);
  AudioBands analyse(std::span<const float> block);
  void transform(std::span<const float> block);
  double band(std::size_t first, std::size_t last, double gain) const;
  double beat(double bass);

  std::vector<float> pending_;
  double bassAverage_ = 0;
  std::unique_ptr<Workspace> workspace_;
};

}  // namespace veloria
