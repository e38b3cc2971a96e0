#include "sources/AudioAnalysis.h"

#include <kiss_fftr.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <numbers>

namespace veloria {

namespace {

constexpr std::size_t usualDelivery = 8192;
constexpr float mostOfASample = 1024;
constexpr double steepness = 0.75;
constexpr double beatWeight = 0.08;

struct FreeTransform {
  void operator()(kiss_fftr_cfg transform) const { kiss_fftr_free(transform); }
};

double loudness(double amount) {
  return std::min(std::log10(1 + amount) * steepness, 1.0);
}

double rootMeanSquare(std::span<const float> block) {
  double sum = 0;
  for (const double sample : block) sum += sample * sample;
  return std::sqrt(sum / static_cast<double>(block.size()));
}

float usable(float sample) {
  return std::isfinite(sample) ? std::clamp(sample, -mostOfASample, mostOfASample) : 0.0F;
}

}  // namespace

struct AudioAnalysis::Workspace {
  Workspace() {
    if (!transform) throw std::bad_alloc();
    for (std::size_t n = 0; n < blockSize; ++n) {
      const double turn = static_cast<double>(n) / static_cast<double>(blockSize);
      window[n] = static_cast<float>(0.5 * (1 - std::cos(2 * std::numbers::pi * turn)));
    }
  }

  std::unique_ptr<kiss_fftr_state, FreeTransform> transform{kiss_fftr_alloc(blockSize, 0, nullptr, nullptr)};
  std::array<float, blockSize> window{};
  std::array<float, blockSize> windowed{};
  std::array<kiss_fft_cpx, blockSize / 2 + 1> spectrum{};
};

AudioAnalysis::AudioAnalysis() : workspace_(std::make_unique<Workspace>()) {
  pending_.reserve(blockSize + usualDelivery);
}

AudioAnalysis::~AudioAnalysis() = default;

std::optional<AudioBands> AudioAnalysis::add(std::span<const std::span<const float>> channels) {
  fold(channels);
  if (pending_.size() < blockSize) return std::nullopt;
  const AudioBands bands = analyze(std::span(pending_).last(blockSize));
  pending_.clear();
  return bands;
}

void AudioAnalysis::reset() {
  pending_.clear();
  bassAverage_ = 0;
}

void AudioAnalysis::fold(std::span<const std::span<const float>> channels) {
  if (channels.empty()) return;
  const std::size_t start = pending_.size();
  for (const float sample : channels.front()) pending_.push_back(usable(sample));
  const auto mono = std::span(pending_).subspan(start);
  for (const auto channel : channels.subspan(1)) {
    const std::size_t shared = std::min(mono.size(), channel.size());
    for (std::size_t i = 0; i < shared; ++i) mono[i] = (mono[i] + usable(channel[i])) * 0.5F;
  }
}

AudioBands AudioAnalysis::analyze(std::span<const float> block) {
  transform(block);
  AudioBands bands;
  bands.level = loudness(rootMeanSquare(block) * 14);
  bands.bass = band(1, 5, 55);
  bands.mid = band(5, 42, 90);
  bands.treble = band(42, 256, 150);
  bands.beat = beat(bands.bass);
  return bands;
}

void AudioAnalysis::transform(std::span<const float> block) {
  Workspace& space = *workspace_;
  for (std::size_t n = 0; n < blockSize; ++n) space.windowed[n] = block[n] * space.window[n];
  kiss_fftr(space.transform.get(), space.windowed.data(), space.spectrum.data());
}

double AudioAnalysis::band(std::size_t first, std::size_t last, double gain) const {
  double sum = 0;
  for (std::size_t k = first; k <= last; ++k) {
    const kiss_fft_cpx& bin = workspace_->spectrum[k];
    sum += 2 * std::sqrt(bin.r * bin.r + bin.i * bin.i);
  }
  const double mean = sum / static_cast<double>(last - first + 1);
  return loudness(mean * gain / static_cast<double>(blockSize));
}

double AudioAnalysis::beat(double bass) {
  const double rise = std::max(bass - bassAverage_, 0.0);
  bassAverage_ = bass * beatWeight + bassAverage_ * (1 - beatWeight);
  return std::min(rise * 4, 1.0);
}

}  // namespace veloria
