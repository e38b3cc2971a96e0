#include "sources/AudioAnalysis.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace veloria {
namespace {

using Samples = std::vector<float>;
using Channels = std::vector<Samples>;

constexpr std::size_t blockSize = AudioAnalysis::blockSize;
constexpr double near = 1e-5;

Samples sine(double bin, double amplitude = 1, std::size_t count = blockSize) {
  Samples samples(count);
  for (std::size_t n = 0; n < count; ++n) {
    const double turns = bin * static_cast<double>(n) / static_cast<double>(blockSize);
    samples[n] = static_cast<float>(amplitude * std::sin(2 * std::numbers::pi * turns));
  }
  return samples;
}

std::optional<AudioBands> add(AudioAnalysis& analysis, const Channels& channels) {
  const std::vector<std::span<const float>> spans(channels.begin(), channels.end());
  return analysis.add(spans);
}

AudioBands bandsOf(const Channels& channels) {
  AudioAnalysis analysis;
  return add(analysis, channels).value();
}

double scaled(double amount) {
  return 0.75 * std::log10(1 + amount);
}

// A sine of amplitude 1 on bin k has the magnitude 512 there and 256 in the bins beside it.
TEST(AudioAnalysis, sinesOfKnownLevelGiveTheBandsOfTheFormula) {
  struct Case {
    double bin;
    double bass, mid, treble;  // the sum of the magnitudes in each band's bins
  };
  for (const Case& each : {Case{3, 1024, 0, 0}, Case{1, 768, 0, 0}, Case{5, 768, 768, 0}, Case{6, 256, 1024, 0},
                           Case{42, 0, 768, 768}, Case{100, 0, 0, 1024}, Case{256, 0, 0, 768}, Case{258, 0, 0, 0}}) {
    const AudioBands bands = bandsOf({sine(each.bin)});
    EXPECT_NEAR(bands.bass, scaled(each.bass / 5 * 55 / 1024), near) << "bin " << each.bin;
    EXPECT_NEAR(bands.mid, scaled(each.mid / 38 * 90 / 1024), near) << "bin " << each.bin;
    EXPECT_NEAR(bands.treble, scaled(each.treble / 215 * 150 / 1024), near) << "bin " << each.bin;
    EXPECT_NEAR(bands.level, scaled(std::sqrt(0.5) * 14), near) << "bin " << each.bin;
  }
}

TEST(AudioAnalysis, silenceIsFiveZeros) {
  EXPECT_EQ(bandsOf({Samples(blockSize)}), AudioBands());
}

TEST(AudioAnalysis, loudSoundStopsAtOne) {
  Samples loud(blockSize);
  for (std::size_t n = 0; n < blockSize; ++n) loud[n] = n % 97 == 0 ? 900.0F : 0.0F;
  EXPECT_EQ(bandsOf({loud}), (AudioBands{1, 1, 1, 1, 1}));
}

TEST(AudioAnalysis, theNewestBlockIsAnalysedAndTheRestForgotten) {
  AudioAnalysis analysis;
  Samples stale(476, 1.0F);
  const Samples fresh = sine(3);
  Samples first = stale;
  first.insert(first.end(), fresh.begin(), fresh.begin() + 524);
  EXPECT_FALSE(add(analysis, {first}));
  const Samples second(fresh.begin() + 524, fresh.end());
  const auto bands = add(analysis, {second});
  ASSERT_TRUE(bands);
  EXPECT_EQ(*bands, bandsOf({fresh}));

  EXPECT_FALSE(add(analysis, {Samples(blockSize - 1)}));
  EXPECT_TRUE(add(analysis, {Samples(1)}));
}

TEST(AudioAnalysis, channelsAreFoldedPairwiseAsFarAsTheyReach) {
  const auto level = [](const Channels& channels) { return bandsOf(channels).level; };
  const auto constant = [](float value, std::size_t count = blockSize) { return Samples(count, value); };
  EXPECT_NEAR(level({constant(0.4F), constant(0.8F)}), scaled(14 * 0.6), near);
  EXPECT_NEAR(level({constant(0.4F), constant(0.8F), constant(0.1F)}), scaled(14 * 0.35), near);
  EXPECT_NEAR(level({constant(0.6F), constant(-0.6F)}), 0, near);
  const double half = std::sqrt((0.2 * 0.2 + 0.4 * 0.4) / 2);
  EXPECT_NEAR(level({constant(0.4F), constant(0, blockSize / 2)}), scaled(14 * half), near);
  EXPECT_NEAR(level({constant(0.4F), constant(0.4F, 5 * blockSize)}), scaled(14 * 0.4), near);
}

TEST(AudioAnalysis, aBeatIsTheRiseOfTheBassOverItsSlowAverage) {
  AudioAnalysis analysis;
  const Samples quiet = sine(3, 0.03);
  const double bass = scaled(11 * 0.03);
  ASSERT_LT(bass * 4, 1);
  EXPECT_EQ(add(analysis, {Samples(blockSize)})->beat, 0);
  EXPECT_NEAR(add(analysis, {quiet})->beat, 4 * bass, near);
  EXPECT_NEAR(add(analysis, {quiet})->beat, 4 * bass * 0.92, near);
  EXPECT_NEAR(add(analysis, {quiet})->beat, 4 * bass * 0.92 * 0.92, near);
  EXPECT_EQ(add(analysis, {Samples(blockSize)})->beat, 0);
  EXPECT_EQ(add(analysis, {sine(3)})->beat, 1);
}

TEST(AudioAnalysis, resetForgetsTheBassAndTheSamples) {
  AudioAnalysis analysis;
  const Samples quiet = sine(3, 0.03);
  const double beat = add(analysis, {quiet})->beat;
  add(analysis, {Samples(1000, 1.0F)});
  analysis.reset();
  EXPECT_FALSE(add(analysis, {Samples(500)}));
  analysis.reset();
  EXPECT_EQ(add(analysis, {quiet})->beat, beat);
}

TEST(AudioAnalysis, whatIsNoNumberDoesNotStick) {
  constexpr float infinity = std::numeric_limits<float>::infinity();
  constexpr float largest = std::numeric_limits<float>::max();
  const auto within = [](double value) { return value >= 0 && value <= 1; };
  for (const float bad : {std::numeric_limits<float>::quiet_NaN(), infinity, -infinity, largest, -largest}) {
    AudioAnalysis analysis;
    Samples samples = sine(3, 0.03);
    for (std::size_t n = 0; n < blockSize; n += 3) samples[n] = bad;
    for (const auto& channels : {Channels({samples}), Channels{sine(3), samples}, Channels{samples, samples}}) {
      const AudioBands bands = add(analysis, channels).value();
      for (const double value : {bands.level, bands.bass, bands.mid, bands.treble, bands.beat}) {
        EXPECT_TRUE(within(value)) << value << " from " << bad;
      }
    }
    for (int i = 0; i < 200; ++i) add(analysis, {Samples(blockSize)});
    EXPECT_EQ(add(analysis, {Samples(blockSize)}), AudioBands());
    EXPECT_NEAR(add(analysis, {sine(3, 0.03)})->beat, 4 * scaled(11 * 0.03), near);
  }
}

TEST(AudioAnalysis, nothingAtAllIsNoBlock) {
  AudioAnalysis analysis;
  EXPECT_FALSE(analysis.add({}));
  EXPECT_FALSE(add(analysis, {{}}));
  EXPECT_FALSE(add(analysis, {{}, Samples(5 * blockSize)}));
}

}  // namespace
}  // namespace veloria
