#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace veloria {

/// The loudness of the sound, overall and by pitch. Each value is in 0...1; all are 0 in silence.
struct AudioBands {
  double level = 0;   ///< overall loudness
  double bass = 0;    ///< about 47 to 234 Hz
  double mid = 0;     ///< about 234 to 1969 Hz
  double treble = 0;  ///< about 1969 to 12000 Hz
  double beat = 0;    ///< how far the bass is above its recent average

  bool operator==(const AudioBands&) const = default;
};

/// Turns samples into bands. One thread at a time; no locks, and no allocation after the largest delivery.
///
/// The numbers follow this convention: with N = 1024, samples x[n] and the Hann window w[n] = (1 - cos(2 pi n / N)) /
/// 2, the magnitude of bin k is m[k] = 2 |X[k]|, where X[k] = sum over n of x[n] w[n] exp(-2 pi i k n / N),
/// unnormalised. So a sine of amplitude a exactly on bin k has m[k] = a N / 2 and half of that on each side. Bins
/// are 46.875 Hz wide at 48 kHz; the actual rate is not used.
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

  /// Folds the channels to one (averages each further channel with the result so far, as far as it reaches) and keeps
  /// the samples until there are 1024. Then analyses the newest 1024 and drops all others. A sample that is not finite
  /// counts as 0; others are clamped to 1024 times full scale.
  std::optional<AudioBands> add(std::span<const std::span<const float>> channels);

  /// Forgets samples and average.
  void reset();

 private:
  struct Workspace;

  void fold(std::span<const std::span<const float>> channels);
  AudioBands analyze(std::span<const float> block);
  void transform(std::span<const float> block);
  double band(std::size_t first, std::size_t last, double gain) const;
  double beat(double bass);

  std::vector<float> pending_;
  double bassAverage_ = 0;
  std::unique_ptr<Workspace> workspace_;
};

}  // namespace veloria
