// Interleaved samples as a sound server delivers them, from any bytes, in pieces of any length. Whatever they hold,
// every band is a number from 0 to 1, and a while of silence afterwards is silence.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "platform/linux/pulse/Monitor.h"
#include "sources/AudioAnalysis.h"

namespace {

using veloria::AudioAnalysis;
using veloria::AudioBands;

void require(bool condition) {
  if (!condition) std::abort();
}

void check(const AudioBands& bands) {
  for (const double value : {bands.level, bands.bass, bands.mid, bands.treble, bands.beat}) {
    require(value >= 0 && value <= 1);
  }
}

void deliver(AudioAnalysis& analysis, std::span<const std::byte> bytes, std::size_t channelCount) {
  std::array<float, 300> left{};
  std::array<float, 300> right{};
  const std::size_t frames = veloria::deinterleave(bytes, left, right);
  require(frames <= left.size());
  const std::array<std::span<const float>, 3> channels{std::span(left).first(frames), std::span(right).first(frames),
                                                       std::span(left).last(frames / 2)};
  if (const auto bands = analysis.add(std::span(channels).first(channelCount))) check(*bands);
}

void checkSilence(AudioAnalysis& analysis) {
  const std::vector<float> silence(AudioAnalysis::blockSize);
  const std::array<std::span<const float>, 1> channels{silence};
  require(analysis.add(channels) == AudioBands());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::size_t channelCount = data[0] % 4U;
  const std::size_t piece = 1 + data[1] * 16U;
  auto bytes = std::as_bytes(std::span(data, size)).subspan(2);
  AudioAnalysis analysis;
  // The same bytes again and again, so that a short input fills blocks too.
  for (int round = 0; round < 4; ++round) {
    for (std::size_t i = 0; i < bytes.size(); i += piece) {
      deliver(analysis, bytes.subspan(i, std::min(piece, bytes.size() - i)), channelCount);
    }
  }
  checkSilence(analysis);
  return 0;
}
