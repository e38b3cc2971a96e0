// Interleaved samples as a sound server delivers them, from any bytes, in pieces of any length. Whatever they hold,
// every band is a number from 0 to 1, and a while of silence afterwards is silence.

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "FuzzTarget.h"
#include "platform/linux/pulse/Monitor.h"
#include "sources/AudioAnalysis.h"

namespace veloria {
namespace {

void deliver(AudioAnalysis& analysis, std::span<const std::byte> bytes, std::size_t channelCount) {
  std::array<float, 300> left{}, right{};
  const std::size_t frames = deinterleave(bytes, left, right);
  require(frames <= left.size());
  const std::array<std::span<const float>, 3> channels{std::span(left).first(frames), std::span(right).first(frames),
                                                       std::span(left).last(frames / 2)};
  const AudioBands bands = analysis.add(std::span(channels).first(channelCount)).value_or(AudioBands());
  for (const double value : {bands.level, bands.bass, bands.mid, bands.treble, bands.beat}) {
    require(value >= 0 && value <= 1);
  }
}

}  // namespace

void fuzz(std::string_view input) {
  if (input.size() < 2) return;
  const auto all = std::as_bytes(std::span(input));
  const std::size_t channelCount = std::to_integer<std::size_t>(all[0]) % 4U;
  const std::size_t piece = 1 + std::to_integer<std::size_t>(all[1]) * 16U;
  AudioAnalysis analysis;
  // The same bytes again and again, so that a short input fills blocks too.
  for (int round = 0; round < 4; ++round) {
    for (auto bytes = all.subspan(2); !bytes.empty(); bytes = bytes.subspan(std::min(piece, bytes.size()))) {
      deliver(analysis, bytes.first(std::min(piece, bytes.size())), channelCount);
    }
  }
  const std::vector<float> silence(AudioAnalysis::blockSize);
  const std::array<std::span<const float>, 1> channels{silence};
  require(analysis.add(channels) == AudioBands());
}

}  // namespace veloria
