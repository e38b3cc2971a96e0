// What is captured of the menu bar, and from the system's lists of buffers to what the audio source makes of them.

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include "platform/macos/capture/BarCaptureSettings.h"
#include "platform/macos/sources/AudioBuffers.h"
#include "platform/macos/sources/AudioGate.h"
#include "sources/AudioSource.h"

namespace veloria::tests {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using Bytes = std::span<const std::byte>;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(BarCaptureSettings, PicturesHaveWholePixelsOrAreNotCaptured) {
  for (const auto& [height, size] : {std::pair{33.7, gpu::Size{1501, 50}}, {-3, {}}, {0.4, {}}, {notANumber, {}}}) {
    const auto settings = barCaptureSettings({.displayID = 1, .rect = {12, 0, 1000.9, height}, .scale = 1.5});
    EXPECT_EQ(settings.value_or(BarCaptureSettings{}).pictures, size) << height;
  }
  EXPECT_TRUE(barCaptureSettings({.displayID = 1, .rect = {0, 0, 16384, 1}, .scale = 1}));
  EXPECT_FALSE(barCaptureSettings({.displayID = 1, .rect = {0, 0, 16385, 1}, .scale = 1}));
}

TEST(BarCaptureSettings, TheWantedDisplayWithoutOurOwnContent) {
  const std::array<std::uint32_t, 3> displays{5, 69, 7};
  EXPECT_EQ(displayToCapture(displays, 69), 1U);
  EXPECT_EQ(displayToCapture(displays, 8), 0U);
  EXPECT_EQ(displayToCapture({}, 5), std::nullopt);
  const std::vector applications{100, 200, 300}, owners{300, 0, 42, 42};
  EXPECT_EQ(ownContent(applications, owners, 300).application, 2U);
  EXPECT_THAT(ownContent(applications, owners, 42).windows, ElementsAre(2U, 3U));
}

constexpr std::uint32_t packedFlag = 8, separateFlag = 32;
constexpr StreamDescription floats{48000, linearPcm, floatFlag | packedFlag | separateFlag, 2, 32};

/// Hands over what a test gives it.
struct HandTap : AudioTap {
  explicit HandTap(Handlers& of) : handlers(of) {}
  void start(Handlers given) override { handlers = std::move(given); }
  void stop() override {}
  Handlers& handlers;
};

class MacAudio : public testing::Test {
 protected:
  MacAudio() { source.start(); }
  void hear(const StreamDescription& description, const std::vector<Bytes>& buffers) {
    std::vector<std::span<const float>> channels;
    handlers.audio(blockOf(audioFormat(description), buffers, channels));
  }
  /// The level that equal samples of these amplitudes give, a channel each.
  double levelOf(const std::vector<float>& amplitudes) {
    std::vector<std::vector<float>> channels;
    std::vector<Bytes> buffers;
    for (const float amplitude : amplitudes) channels.emplace_back(1024, amplitude);
    for (auto& samples : channels) {
      for (std::size_t i = 0; i < samples.size(); ++i) samples[i] *= std::sin(0.0184F * static_cast<float>(i));
      buffers.push_back(std::as_bytes(std::span(samples)));
    }
    hear(floats, buffers);
    return source.bands().level;
  }
  std::string note() const { return source.diagnostics().lastFormatNote; }
  int failures() const { return source.diagnostics().decodeFailures; }

  AudioTap::Handlers handlers;
  AudioSource source{std::make_unique<HandTap>(handlers)};
};

TEST_F(MacAudio, OneBufferAChannelIsHeardAsTheirMean) {
  const double both = levelOf({0.5F, 0.5F});
  EXPECT_GT(both, 0.1);
  EXPECT_EQ(note(), "rate=48000 ch=2 flags=41 bits=32");
  EXPECT_NEAR(levelOf({0.5F, -0.5F}), 0, 1e-6);
  EXPECT_LT(levelOf({0.25F}), both);
  EXPECT_FALSE(std::isnan(levelOf({std::numeric_limits<float>::quiet_NaN()})));
}

TEST_F(MacAudio, OtherSamplesAreCountedAndLeft) {
  const std::vector<std::byte> odd(4099);
  const std::vector<Bytes> buffers{Bytes(odd).first(4096)};
  const std::initializer_list<StreamDescription> others{{48000, linearPcm, 4 | packedFlag, 2, 16},
                                                        {48000, linearPcm, floats.formatFlags, 2, 64},
                                                        {48000, linearPcm, floats.formatFlags | bigEndianFlag, 2, 32},
                                                        {48000, 0x61616320, floats.formatFlags, 2, 32}};
  for (const auto& description : others) hear(description, buffers);
  EXPECT_THAT(note(), EndsWith(" notFloat"));
  hear(floats, {});
  EXPECT_EQ(failures(), 5);
  hear(floats, {Bytes{}, Bytes{}});
  hear(floats, {Bytes(odd).first(4097), Bytes(odd).first(3)});
  hear(floats, {Bytes(odd).subspan(1, 4096)});
  EXPECT_THAT(note(), EndsWith(" misaligned"));
  EXPECT_EQ(floatsIn(Bytes(odd))->size(), 1024U);
  EXPECT_EQ(static_cast<const void*>(floatsIn(Bytes(odd))->data()), odd.data()) << "in place";
}

TEST(AudioGate, KeepsTheOrderAndTellsNothingAfterTheEnd) {
  std::string heard;
  const AudioTap::Handlers handlers{.audio = [&](const AudioBlock&) { heard += "a"; },
                                    .started = [&] { heard += "s"; },
                                    .failed = [&](const std::string& text) { heard += "f:" + text; }};
  AudioGate gate(handlers);
  gate.audio({});
  gate.started();
  gate.audio({});
  gate.failed("gone");
  gate.failed("again");
  AudioGate closed(handlers);
  closed.close();
  closed.started();
  closed.audio({});
  closed.failed("late");
  EXPECT_EQ(heard, "saaf:gone");
}

TEST(AudioGate, ClosingWaitsForTheHandlerThatRuns) {
  std::atomic<bool> inside = false, done = false;
  AudioTap::Handlers handlers;
  handlers.audio = [&](const AudioBlock&) {
    inside = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    done = true;
  };
  handlers.started = [] {};
  AudioGate gate(handlers);
  std::thread queue([&] { gate.audio({}); });
  while (!inside) std::this_thread::yield();
  gate.close();
  EXPECT_TRUE(done);
  queue.join();
}

}  // namespace
}  // namespace veloria::tests
