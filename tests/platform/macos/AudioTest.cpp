// From the system's lists of buffers to what the audio source makes of them, and the order of a tap's reports.

#include <gmock/gmock.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <numbers>
#include <thread>
#include <utility>

#include "platform/macos/audio/AudioBuffers.h"
#include "platform/macos/audio/AudioGate.h"
#include "sources/AudioSource.h"

namespace veloria {
namespace {

using Bytes = std::span<const std::byte>;

constexpr std::uint32_t nonInterleavedFlag = 32;
constexpr std::uint32_t packedFlag = 8;
constexpr std::uint32_t integerFlag = 4;

StreamDescription floats() {
  return {.sampleRate = 48000,
          .formatID = linearPcm,
          .formatFlags = floatFlag | packedFlag | nonInterleavedFlag,
          .channelsPerFrame = 2,
          .bitsPerChannel = 32};
}

/// A tap that hands over what a test gives it.
class HandTap final : public AudioTap {
 public:
  explicit HandTap(Handlers& handlers) : handlers_(handlers) {}
  void start(Handlers handlers) override { handlers_ = std::move(handlers); }
  void stop() override {}

 private:
  Handlers& handlers_;
};

class MacAudio : public testing::Test {
 protected:
  MacAudio() { source_.start(); }

  void hear(const StreamDescription& description, const std::vector<Bytes>& buffers) {
    std::vector<std::span<const float>> channels;
    handlers_.audio(blockOf(audioFormat(description), buffers, channels));
  }
  void hearFloats(const std::vector<std::vector<float>>& channels) {
    std::vector<Bytes> buffers;
    for (const auto& channel : channels) buffers.push_back(std::as_bytes(std::span(channel)));
    hear(floats(), buffers);
  }
  std::string note() const { return source_.diagnostics().lastFormatNote; }
  int failures() const { return source_.diagnostics().decodeFailures; }

  AudioTap::Handlers handlers_;
  AudioSource source_{std::make_unique<HandTap>(handlers_)};
};

std::vector<float> tone(float amplitude) {
  std::vector<float> samples(1024);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = amplitude * std::sin(2 * std::numbers::pi_v<float> * 3 * static_cast<float>(i) / 1024);
  }
  return samples;
}

TEST_F(MacAudio, oneBufferAChannelIsHeardAsTheirMean) {
  hearFloats({tone(0.5F), tone(0.5F)});
  const double both = source_.bands().level;
  EXPECT_GT(both, 0.1);
  EXPECT_GT(source_.bands().bass, 0.1);
  EXPECT_EQ(note(), "rate=48000 ch=2 flags=41 bits=32");
  hearFloats({tone(0.5F), tone(-0.5F)});
  EXPECT_NEAR(source_.bands().level, 0, 1e-6);
  hearFloats({tone(0.25F)});
  EXPECT_LT(source_.bands().level, both);
  EXPECT_EQ(failures(), 0);
}

TEST_F(MacAudio, interleavedChannelsAreTakenAsTheyAre) {
  std::vector<float> samples;
  for (const float sample : tone(0.5F)) samples.insert(samples.end(), {sample, sample});
  std::vector<std::span<const float>> channels;
  const AudioBlock block = blockOf(audioFormat(floats()), std::vector{std::as_bytes(std::span(samples))}, channels);
  ASSERT_EQ(block.channels.size(), 1U);
  EXPECT_EQ(block.channels[0].size(), 2048U);
  EXPECT_EQ(block.channels[0].data(), samples.data());
}

TEST_F(MacAudio, samplesThatAreNoPlainFloatsAreCountedAndLeft) {
  const auto samples = tone(0.5F);
  const std::vector<Bytes> buffers{std::as_bytes(std::span(samples))};
  StreamDescription integers = floats();
  integers.formatFlags = integerFlag | packedFlag;
  integers.bitsPerChannel = 16;
  hear(integers, buffers);
  EXPECT_EQ(note(), "rate=48000 ch=2 flags=12 bits=16 notFloat");
  StreamDescription doubles = floats();
  doubles.bitsPerChannel = 64;
  hear(doubles, buffers);
  StreamDescription swapped = floats();
  swapped.formatFlags |= bigEndianFlag;
  hear(swapped, buffers);
  StreamDescription packets = floats();
  packets.formatID = 0x61616320;
  hear(packets, buffers);
  EXPECT_THAT(note(), ::testing::HasSubstr("notFloat"));
  EXPECT_EQ(failures(), 4);
  EXPECT_EQ(source_.bands().level, 0);
}

TEST_F(MacAudio, whatTheSystemCouldNotGiveIsNoted) {
  handlers_.audio(unreadableBlock(audioFormat(floats()), "sizeStatus", -12731));
  EXPECT_EQ(note(), "rate=48000 ch=2 flags=41 bits=32 sizeStatus=-12731");
  handlers_.audio(unreadableBlock(audioFormat(floats()), "bufferListStatus", -12737));
  EXPECT_THAT(note(), ::testing::EndsWith(" bufferListStatus=-12737"));
  handlers_.audio(undescribedBlock());
  EXPECT_EQ(note(), "no format description");
  EXPECT_EQ(failures(), 3);
  handlers_.audio(pictureBlock());
  EXPECT_EQ(failures(), 3);
  EXPECT_EQ(source_.diagnostics().callbackCount, 4);
  EXPECT_EQ(source_.diagnostics().audioCallbackCount, 3);
}

TEST_F(MacAudio, hostileListsDoNoHarm) {
  hear(floats(), {});
  EXPECT_EQ(failures(), 1);
  hear(floats(), {Bytes{}, Bytes{}});
  hearFloats({std::vector<float>(1024, std::numeric_limits<float>::quiet_NaN())});
  EXPECT_FALSE(std::isnan(source_.bands().level));
  const std::vector<std::byte> odd(4099);
  hear(floats(), {Bytes(odd).first(4097), Bytes(odd).first(3)});
  hear(floats(), {Bytes(odd).subspan(1, 4096)});
  EXPECT_THAT(note(), ::testing::EndsWith(" misaligned"));
  EXPECT_EQ(floatsIn(Bytes(odd).first(4099))->size(), 1024U);
}

class AudioGateTest : public testing::Test {
 protected:
  AudioGate gate_{{.audio = [this](const AudioBlock&) { heard_ += "a"; },
                   .started = [this] { heard_ += "s"; },
                   .failed = [this](const std::string& text) { heard_ += "f:" + text; }}};
  std::string heard_;
};

TEST_F(AudioGateTest, aBlockThatComesEarlyTellsTheStartFirst) {
  gate_.audio({});
  gate_.started();
  gate_.audio({});
  EXPECT_EQ(heard_, "saa");
}

TEST_F(AudioGateTest, nothingComesAfterAFailureOrTheEnd) {
  gate_.started();
  gate_.failed("gone");
  gate_.failed("again");
  gate_.audio({});
  EXPECT_EQ(heard_, "sf:gone");
  AudioGate closed({.audio = [this](const AudioBlock&) { heard_ += "!"; },
                    .started = [this] { heard_ += "!"; },
                    .failed = [this](const std::string&) { heard_ += "!"; }});
  closed.close();
  closed.started();
  closed.audio({});
  closed.failed("late");
  EXPECT_EQ(heard_, "sf:gone");
}

TEST(AudioGate, closingWaitsForTheHandlerThatRuns) {
  std::atomic<bool> inside = false;
  std::atomic<bool> done = false;
  AudioGate gate({.audio =
                      [&](const AudioBlock&) {
                        inside = true;
                        std::this_thread::sleep_for(std::chrono::milliseconds(20));
                        done = true;
                      },
                  .started = [] {},
                  .failed = [](const std::string&) {}});
  std::thread queue([&] { gate.audio({}); });
  while (!inside) std::this_thread::yield();
  gate.close();
  EXPECT_TRUE(done);
  queue.join();
}

}  // namespace
}  // namespace veloria
