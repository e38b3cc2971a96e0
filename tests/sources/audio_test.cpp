#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>

#include "sources/AudioAnalysis.h"
#include "sources/AudioSource.h"

namespace veloria::tests {
namespace {

using Samples = std::vector<float>;
using Channels = std::vector<Samples>;
using testing::Optional;

constexpr std::size_t blockSize = AudioAnalysis::blockSize;
constexpr double near = 1e-5;

Samples sine(double bin, double amplitude = 1) {
  Samples samples(blockSize);
  for (std::size_t n = 0; n < blockSize; ++n) {
    const double turns = bin * static_cast<double>(n) / static_cast<double>(blockSize);
    samples[n] = static_cast<float>(amplitude * std::sin(2 * std::numbers::pi * turns));
  }
  return samples;
}

std::optional<AudioBands> add(AudioAnalysis& analysis, const Channels& channels) {
  return analysis.add(std::vector<std::span<const float>>(channels.begin(), channels.end()));
}

AudioBands bandsOf(const Channels& channels) {
  AudioAnalysis analysis;
  return add(analysis, channels).value();
}

double scaled(double amount) {
  return 0.75 * std::log10(1 + amount);
}

// A sine of amplitude 1 on bin k has the magnitude 512 there and 256 in the bins beside it.
TEST(AudioAnalysis, GivesTheBandsOfTheFormulaForSines) {
  // The sum of the magnitudes in each band's bins.
  for (const auto& [bin, bass, mid, treble] : {std::array{3.0, 1024.0, 0.0, 0.0},
                                               {1, 768, 0, 0},
                                               {5, 768, 768, 0},
                                               {6, 256, 1024, 0},
                                               {42, 0, 768, 768},
                                               {256, 0, 0, 768},
                                               {258, 0, 0, 0}}) {
    const AudioBands bands = bandsOf({sine(bin)});
    EXPECT_NEAR(bands.bass, scaled(bass / 5 * 55 / 1024), near) << "bin " << bin;
    EXPECT_NEAR(bands.mid, scaled(mid / 38 * 90 / 1024), near) << "bin " << bin;
    EXPECT_NEAR(bands.treble, scaled(treble / 215 * 150 / 1024), near) << "bin " << bin;
    EXPECT_NEAR(bands.level, scaled(std::sqrt(0.5) * 14), near) << "bin " << bin;
  }
  Samples loud(blockSize);
  for (std::size_t n = 0; n < blockSize; n += 97) loud[n] = 900;
  EXPECT_EQ(bandsOf({loud}), (AudioBands{1, 1, 1, 1, 1}));
}

TEST(AudioAnalysis, AnalysesTheNewestBlockAndForgetsTheRest) {
  AudioAnalysis analysis;
  const Samples fresh = sine(3);
  Samples first(476, 1.0F);
  first.insert(first.end(), fresh.begin(), fresh.begin() + 524);
  EXPECT_FALSE(add(analysis, {first}));
  EXPECT_THAT(add(analysis, {Samples(fresh.begin() + 524, fresh.end())}), Optional(bandsOf({fresh})));
  EXPECT_FALSE(add(analysis, {Samples(blockSize - 1)}));
  EXPECT_TRUE(add(analysis, {Samples(1)}));
}

TEST(AudioAnalysis, FoldsChannelsPairwiseAsFarAsTheyReach) {
  const Samples first(blockSize, 0.4F), second(blockSize, 0.8F), third(blockSize, 0.1F), half(blockSize / 2, 0.0F);
  EXPECT_NEAR(bandsOf({first, second, third}).level, scaled(14 * 0.35), near);
  EXPECT_NEAR(bandsOf({first, half}).level, scaled(14 * std::sqrt((0.2 * 0.2 + 0.4 * 0.4) / 2)), near);
}

TEST(AudioAnalysis, ABeatIsTheRiseOfTheBassOverItsSlowAverage) {
  AudioAnalysis analysis;
  const Samples quiet = sine(3, 0.03);
  const double beat = 4 * scaled(11 * 0.03);
  const std::pair<Samples, double> steps[] = {{Samples(blockSize), 0}, {quiet, beat},
                                              {quiet, beat * 0.92},    {quiet, beat * 0.92 * 0.92},
                                              {Samples(blockSize), 0}, {sine(3), 1}};
  for (const auto& [samples, expected] : steps) EXPECT_NEAR(add(analysis, {samples})->beat, expected, near);
  add(analysis, {Samples(1000, 1.0F)});
  analysis.reset();
  EXPECT_FALSE(add(analysis, {Samples(500)})) << "the samples are forgotten";
}

TEST(AudioAnalysis, BadSamplesLeaveNoTrace) {
  using Limits = std::numeric_limits<float>;
  for (const float bad : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), Limits::max()}) {
    AudioAnalysis analysis;
    Samples samples = sine(3, 0.03);
    for (std::size_t n = 0; n < blockSize; n += 3) samples[n] = bad;
    for (const auto& channels : {Channels({samples}), Channels{sine(3), samples}, Channels{samples, samples}}) {
      const AudioBands bands = add(analysis, channels).value();
      EXPECT_TRUE(bands.level >= 0 && bands.level <= 1 && bands.bass >= 0 && bands.bass <= 1) << bad;
    }
    for (int i = 0; i < 200; ++i) add(analysis, {Samples(blockSize)});
    EXPECT_EQ(add(analysis, {Samples(blockSize)}), AudioBands());
    EXPECT_NEAR(add(analysis, {sine(3, 0.03)})->beat, 4 * scaled(11 * 0.03), near);
  }
}

/// Fed by hand through the handlers of its last start.
struct HandFedTap final : AudioTap {
  void start(Handlers newHandlers) override {
    ++starts;
    handlers = std::move(newHandlers);
  }
  void stop() override {}

  Handlers handlers;
  int starts = 0;
};

constexpr AudioFormat stereo{48000, 2, 5, 32, true};

class AudioSourceTest : public testing::Test {
 protected:
  AudioBlock block(std::optional<AudioFormat> format = stereo) const {
    return {.isAudio = true, .format = format, .unreadable = {}, .channels = channels};
  }
  void feed(const AudioBlock& delivery) const { tap->handlers.audio(delivery); }

  HandFedTap* const tap = new HandFedTap;
  AudioSource source{std::unique_ptr<AudioTap>(tap)};
  Samples samples = sine(3, 0.03);  // quiet, so that the beat is less than 1
  std::array<std::span<const float>, 2> channels{samples, samples};
  const AudioBands bands = bandsOf({samples});
};

TEST_F(AudioSourceTest, HasBandsBetweenStartAndStopOnly) {
  source.start();
  source.start();
  EXPECT_EQ(tap->starts, 1);
  EXPECT_TRUE(source.isRunning());
  feed(block(AudioFormat{48000, 2, 0, 16, false}));
  EXPECT_EQ(source.bands(), AudioBands()) << "unusable";
  feed(block());
  EXPECT_EQ(source.bands(), bands);
  source.stop();
  feed(block());
  tap->handlers.failed("too late");
  EXPECT_FALSE(source.isRunning());
  EXPECT_EQ(source.bands(), AudioBands());
  EXPECT_EQ(source.lastError(), std::nullopt);
}

TEST_F(AudioSourceTest, AFailureEndsItUntilTheNextStart) {
  source.start();
  feed(block());
  tap->handlers.failed("gone");
  tap->handlers.failed("again");
  EXPECT_EQ(source.bands(), AudioBands());
  EXPECT_FALSE(source.isRunning());
  source.stop();
  EXPECT_THAT(source.lastError(), Optional(std::string("gone")));
  source.start();
  EXPECT_TRUE(source.isRunning());
  EXPECT_EQ(source.lastError(), std::nullopt);
  feed(block());
  EXPECT_EQ(source.bands(), bands) << "as if for the first time";
}

TEST_F(AudioSourceTest, CountsDeliveriesAndNotesTheFormat) {
  source.start();
  AudioBlock picture, unreadable = block();
  picture.isAudio = false;
  unreadable.unreadable = "bufferListStatus=-12731";
  for (const auto& [delivery, note, all, audio, failures] : {
           std::tuple{picture, "none", 1, 0, 0},
           {block(std::nullopt), "no format description", 2, 1, 1},
           {block(), "rate=48000 ch=2 flags=5 bits=32", 3, 2, 1},
           {block(AudioFormat{44100, 1, 9, 64, true}), "rate=44100 ch=1 flags=9 bits=64 notFloat", 4, 3, 2},
           {unreadable, "rate=48000 ch=2 flags=5 bits=32 bufferListStatus=-12731", 5, 4, 3},
       }) {
    feed(delivery);
    const auto [seenAll, seenAudio, seenFailures, seenNote] = source.diagnostics();
    EXPECT_EQ(std::tie(seenNote, seenAll, seenAudio, seenFailures), std::tuple(note, all, audio, failures));
  }
}

}  // namespace
}  // namespace veloria::tests
