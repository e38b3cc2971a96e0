#include "sources/AudioSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <numbers>
#include <thread>
#include <vector>

namespace veloria {
namespace {

using testing::Optional;

// Read once by the log, so it is set before anything asks.
[[maybe_unused]] const int diagnosticsOn = setenv("NIMBRA_DEBUG", "1", 1);

/// A tap that is fed by hand; it outlives its AudioSource so that a test can look at it.
struct HandFed {
  AudioTap::Handlers handlers;
  int starts = 0;
  int stops = 0;
  std::string failsAtStart;
};

class HandFedTap final : public AudioTap {
 public:
  explicit HandFedTap(HandFed& state) : state_(state) {}
  void start(Handlers handlers) override {
    ++state_.starts;
    state_.handlers = std::move(handlers);
    if (!state_.failsAtStart.empty()) state_.handlers.failed(state_.failsAtStart);
  }
  void stop() override { ++state_.stops; }

 private:
  HandFed& state_;
};

constexpr AudioFormat stereo{48000, 2, 5, 32, true};

class AudioSourceTest : public testing::Test {
 protected:
  AudioSourceTest() {
    for (std::size_t n = 0; n < samples.size(); ++n) {
      samples[n] = static_cast<float>(std::sin(2 * std::numbers::pi * 3 * static_cast<double>(n) / 1024));
    }
  }

  AudioBlock block(std::optional<AudioFormat> format = stereo) const {
    return {.isAudio = true, .format = format, .unreadable = {}, .channels = channels};
  }
  void feed(const AudioBlock& delivery) const { tap.handlers.audio(delivery); }

  HandFed tap;
  AudioSource source{std::make_unique<HandFedTap>(tap)};
  std::vector<float> samples = std::vector<float>(1024);
  std::array<std::span<const float>, 2> channels{samples, samples};
};

TEST_F(AudioSourceTest, runsFromStartToStopAndHasNoBandsOtherwise) {
  EXPECT_FALSE(source.isRunning());
  EXPECT_EQ(source.bands(), AudioBands());
  source.start();
  source.start();
  EXPECT_EQ(tap.starts, 1);
  EXPECT_TRUE(source.isRunning());
  tap.handlers.started();
  feed(block());
  EXPECT_NEAR(source.bands().bass, 0.8094, 1e-4);
  source.stop();
  EXPECT_FALSE(source.isRunning());
  EXPECT_EQ(source.bands(), AudioBands());
  EXPECT_EQ(source.lastError(), std::nullopt);
}

TEST_F(AudioSourceTest, aDeliveryThatCrossesAStopIsNotPublished) {
  source.start();
  source.stop();
  feed(block());
  tap.handlers.failed("too late");
  EXPECT_EQ(source.bands(), AudioBands());
  EXPECT_EQ(source.lastError(), std::nullopt);
}

TEST_F(AudioSourceTest, aFailureZeroesTheBandsAndKeepsItsText) {
  source.start();
  feed(block());
  tap.handlers.failed("gone");
  EXPECT_EQ(source.bands(), AudioBands());
  EXPECT_FALSE(source.isRunning());
  EXPECT_THAT(source.lastError(), Optional(std::string("gone")));
  source.stop();
  EXPECT_THAT(source.lastError(), Optional(std::string("gone")));
  EXPECT_EQ(tap.starts, 1);
}

TEST_F(AudioSourceTest, diagnosticsTellOfTheStartAndOfAFailureOnce) {
  testing::internal::CaptureStderr();
  source.start();
  tap.handlers.started();
  tap.handlers.failed("gone");
  tap.handlers.failed("again");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[nimbra] audio capture started\n[nimbra] audio capture failed: gone\n");
}

TEST_F(AudioSourceTest, aTapMayFailWhileItStarts) {
  tap.failsAtStart = "no way";
  source.start();
  EXPECT_FALSE(source.isRunning());
  EXPECT_THAT(source.lastError(), Optional(std::string("no way")));
}

TEST_F(AudioSourceTest, startingAgainBeginsAfresh) {
  for (float& sample : samples) sample *= 0.03F;  // quiet, so that the beat is less than 1
  source.start();
  feed(block());
  const double beat = source.bands().beat;
  tap.handlers.failed("gone");
  source.start();
  EXPECT_EQ(tap.starts, 2);
  EXPECT_TRUE(source.isRunning());
  EXPECT_EQ(source.lastError(), std::nullopt);
  feed(block());
  EXPECT_EQ(source.bands().beat, beat);
}

TEST_F(AudioSourceTest, deliveriesAreCountedAndTheFormatIsNoted) {
  EXPECT_EQ(source.diagnostics().lastFormatNote, "none");
  source.start();
  struct Case {
    AudioBlock delivery;
    std::string note;
    int all, audio, failures;
  };
  AudioBlock picture;
  picture.isAudio = false;
  AudioBlock unreadable = block();
  unreadable.unreadable = "bufferListStatus=-12731";
  AudioBlock noChannels = block();
  noChannels.channels = {};
  const std::vector<Case> cases{
      {picture, "none", 1, 0, 0},
      {block(std::nullopt), "no format description", 2, 1, 1},
      {block(), "rate=48000 ch=2 flags=5 bits=32", 3, 2, 1},
      {picture, "rate=48000 ch=2 flags=5 bits=32", 4, 2, 1},
      {block(AudioFormat{44100, 1, 12, 16, false}), "rate=44100 ch=1 flags=12 bits=16 notFloat", 5, 3, 2},
      {block(AudioFormat{44100, 1, 9, 64, true}), "rate=44100 ch=1 flags=9 bits=64 notFloat", 6, 4, 3},
      {unreadable, "rate=48000 ch=2 flags=5 bits=32 bufferListStatus=-12731", 7, 5, 4},
      {noChannels, "rate=48000 ch=2 flags=5 bits=32", 8, 6, 5},
  };
  for (const Case& each : cases) {
    feed(each.delivery);
    const auto diagnostics = source.diagnostics();
    EXPECT_EQ(diagnostics.lastFormatNote, each.note);
    EXPECT_EQ(diagnostics.callbackCount, each.all);
    EXPECT_EQ(diagnostics.audioCallbackCount, each.audio);
    EXPECT_EQ(diagnostics.decodeFailures, each.failures);
  }
}

TEST_F(AudioSourceTest, whatCanNotBeUsedDoesNotReachTheBands) {
  source.start();
  feed(block(std::nullopt));
  feed(block(AudioFormat{48000, 2, 0, 16, false}));
  EXPECT_EQ(source.bands(), AudioBands());
}

TEST_F(AudioSourceTest, anyThreadMayAskWhileTheTapDelivers) {
  source.start();
  std::atomic<bool> done = false;
  std::thread feeder([&] {
    for (int i = 0; i < 500; ++i) feed(block());
    tap.handlers.failed("end");
    done = true;
  });
  while (!done) {
    const AudioBands bands = source.bands();
    EXPECT_TRUE(bands.bass == 0 || std::abs(bands.bass - 0.8094) < 1e-4);
    EXPECT_LE(source.diagnostics().decodeFailures, 0);
    source.isRunning();
  }
  feeder.join();
  EXPECT_THAT(source.lastError(), Optional(std::string("end")));
}

TEST(AudioSource, stopsItsTapWhenItGoes) {
  HandFed tap;
  {
    AudioSource source(std::make_unique<HandFedTap>(tap));
    source.start();
    tap.stops = 0;
  }
  EXPECT_GE(tap.stops, 1);
}

}  // namespace
}  // namespace veloria
