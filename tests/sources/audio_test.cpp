#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numbers>

#include "sources/AudioAnalysis.h"
#include "sources/AudioSource.h"

namespace veloria::tests {
namespace {

// Read once by the log, so it is set before anything asks.
[[maybe_unused]] const int diagnosticsOn = setenv("NIMBRA_DEBUG", "1", 1);

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
  EXPECT_EQ(bandsOf({Samples(blockSize)}), AudioBands());
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
  EXPECT_FALSE(analysis.add({}));
  EXPECT_FALSE(add(analysis, {{}}));
  EXPECT_FALSE(add(analysis, {{}, Samples(5 * blockSize)}));
}

TEST(AudioAnalysis, FoldsChannelsPairwiseAsFarAsTheyReach) {
  const auto constant = [](float value, std::size_t count = blockSize) { return Samples(count, value); };
  const std::vector<std::pair<Channels, double>> cases{
      {{constant(0.4F), constant(0.8F)}, 0.6},
      {{constant(0.4F), constant(0.8F), constant(0.1F)}, 0.35},
      {{constant(0.6F), constant(-0.6F)}, 0},
      {{constant(0.4F), constant(0, blockSize / 2)}, std::sqrt((0.2 * 0.2 + 0.4 * 0.4) / 2)},
      {{constant(0.4F), constant(0.4F, 5 * blockSize)}, 0.4},
  };
  for (const auto& [channels, rms] : cases) EXPECT_NEAR(bandsOf(channels).level, scaled(14 * rms), near) << rms;
}

TEST(AudioAnalysis, ABeatIsTheRiseOfTheBassOverItsSlowAverage) {
  AudioAnalysis analysis;
  const Samples quiet = sine(3, 0.03);
  const double beat = 4 * scaled(11 * 0.03);
  ASSERT_LT(beat, 1);
  const std::pair<Samples, double> steps[] = {{Samples(blockSize), 0}, {quiet, beat},
                                              {quiet, beat * 0.92},    {quiet, beat * 0.92 * 0.92},
                                              {Samples(blockSize), 0}, {sine(3), 1}};
  for (const auto& [samples, expected] : steps) EXPECT_NEAR(add(analysis, {samples})->beat, expected, near);
  add(analysis, {Samples(1000, 1.0F)});
  analysis.reset();
  EXPECT_FALSE(add(analysis, {Samples(500)})) << "the samples are forgotten";
  analysis.reset();
  EXPECT_NEAR(add(analysis, {quiet})->beat, beat, near) << "and the bass";
}

TEST(AudioAnalysis, BadSamplesLeaveNoTrace) {
  constexpr float infinity = std::numeric_limits<float>::infinity();
  constexpr float largest = std::numeric_limits<float>::max();
  for (const float bad : {std::numeric_limits<float>::quiet_NaN(), infinity, -infinity, largest, -largest}) {
    AudioAnalysis analysis;
    Samples samples = sine(3, 0.03);
    for (std::size_t n = 0; n < blockSize; n += 3) samples[n] = bad;
    for (const auto& channels : {Channels({samples}), Channels{sine(3), samples}, Channels{samples, samples}}) {
      const AudioBands bands = add(analysis, channels).value();
      for (const double value : {bands.level, bands.bass, bands.mid, bands.treble, bands.beat}) {
        EXPECT_TRUE(value >= 0 && value <= 1) << value << " from " << bad;
      }
    }
    for (int i = 0; i < 200; ++i) add(analysis, {Samples(blockSize)});
    EXPECT_EQ(add(analysis, {Samples(blockSize)}), AudioBands());
    EXPECT_NEAR(add(analysis, {sine(3, 0.03)})->beat, 4 * scaled(11 * 0.03), near);
  }
}

/// What happens to a tap that is fed by hand.
struct HandFed {
  AudioTap::Handlers handlers;
  int starts = 0;
  int stops = 0;
  std::string failsAtStart;
};

struct HandFedTap final : AudioTap {
  explicit HandFedTap(HandFed& own) : state(own) {}
  void start(Handlers handlers) override {
    ++state.starts;
    state.handlers = std::move(handlers);
    if (!state.failsAtStart.empty()) state.handlers.failed(state.failsAtStart);
  }
  void stop() override { ++state.stops; }
  HandFed& state;
};

constexpr AudioFormat stereo{48000, 2, 5, 32, true};

class AudioSourceTest : public testing::Test {
 protected:
  AudioBlock block(std::optional<AudioFormat> format = stereo) const {
    return {.isAudio = true, .format = format, .unreadable = {}, .channels = channels};
  }
  void feed(const AudioBlock& delivery) const { tap.handlers.audio(delivery); }

  HandFed tap;
  std::unique_ptr<AudioSource> source = std::make_unique<AudioSource>(std::make_unique<HandFedTap>(tap));
  Samples samples = sine(3, 0.03);  // quiet, so that the beat is less than 1
  std::array<std::span<const float>, 2> channels{samples, samples};
  const AudioBands bands = bandsOf({samples});
};

TEST_F(AudioSourceTest, HasBandsBetweenStartAndStopOnly) {
  EXPECT_FALSE(source->isRunning());
  EXPECT_EQ(source->bands(), AudioBands());
  source->start();
  source->start();
  EXPECT_EQ(tap.starts, 1);
  EXPECT_TRUE(source->isRunning());
  feed(block(AudioFormat{48000, 2, 0, 16, false}));
  EXPECT_EQ(source->bands(), AudioBands()) << "unusable";
  feed(block());
  EXPECT_EQ(source->bands(), bands);
  source->stop();
  feed(block());
  tap.handlers.failed("too late");
  EXPECT_FALSE(source->isRunning());
  EXPECT_EQ(source->bands(), AudioBands());
  EXPECT_EQ(source->lastError(), std::nullopt);
  source->start();
  tap.stops = 0;
  source.reset();
  EXPECT_GE(tap.stops, 1);
}

TEST_F(AudioSourceTest, AFailureEndsItUntilTheNextStart) {
  testing::internal::CaptureStderr();
  source->start();
  tap.handlers.started();
  feed(block());
  tap.handlers.failed("gone");
  tap.handlers.failed("again");
  EXPECT_EQ(source->bands(), AudioBands());
  EXPECT_FALSE(source->isRunning());
  source->stop();
  EXPECT_THAT(source->lastError(), Optional(std::string("gone")));
  source->start();
  EXPECT_EQ(tap.starts, 2);
  EXPECT_TRUE(source->isRunning());
  EXPECT_EQ(source->lastError(), std::nullopt);
  feed(block());
  EXPECT_EQ(source->bands(), bands) << "as if for the first time";
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[nimbra] audio capture started\n[nimbra] audio capture failed: gone\n");
  source->stop();
  tap.failsAtStart = "no way";
  source->start();
  EXPECT_FALSE(source->isRunning());
  EXPECT_THAT(source->lastError(), Optional(std::string("no way")));
}

TEST_F(AudioSourceTest, CountsDeliveriesAndNotesTheFormat) {
  EXPECT_EQ(source->diagnostics().lastFormatNote, "none");
  source->start();
  AudioBlock picture, unreadable = block(), noChannels = block();
  picture.isAudio = false;
  unreadable.unreadable = "bufferListStatus=-12731";
  noChannels.channels = {};
  struct Case {
    AudioBlock delivery;
    const char* note;
    int all, audio, failures;
  };
  for (const Case& each : {
           Case{picture, "none", 1, 0, 0},
           {block(std::nullopt), "no format description", 2, 1, 1},
           {block(), "rate=48000 ch=2 flags=5 bits=32", 3, 2, 1},
           {picture, "rate=48000 ch=2 flags=5 bits=32", 4, 2, 1},
           {block(AudioFormat{44100, 1, 12, 16, false}), "rate=44100 ch=1 flags=12 bits=16 notFloat", 5, 3, 2},
           {block(AudioFormat{44100, 1, 9, 64, true}), "rate=44100 ch=1 flags=9 bits=64 notFloat", 6, 4, 3},
           {block(AudioFormat{44100, 1, 9, 32, false}), "rate=44100 ch=1 flags=9 bits=32 notFloat", 7, 5, 4},
           {unreadable, "rate=48000 ch=2 flags=5 bits=32 bufferListStatus=-12731", 8, 6, 5},
           {noChannels, "rate=48000 ch=2 flags=5 bits=32", 9, 7, 6},
       }) {
    feed(each.delivery);
    const auto [all, audio, failures, note] = source->diagnostics();
    EXPECT_EQ(std::tuple(note, all, audio, failures), std::tuple(each.note, each.all, each.audio, each.failures));
  }
}

}  // namespace
}  // namespace veloria::tests
