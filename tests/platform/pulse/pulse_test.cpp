#include <gmock/gmock.h>

#include <array>
#include <cstring>
#include <functional>

#include "LocalListener.h"
#include "Process.h"
#include "desktop/SoundServer.h"
#include "platform/linux/pulse/Monitor.h"
#include "platform/linux/pulse/PulseAudioTap.h"
#include "sources/AudioSource.h"

namespace veloria::tests {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

TEST(Monitor, IsTheOneThatTheOutputNamesAndNoOther) {
  EXPECT_EQ(monitorOf({"Speakers", 7, "speakers.monitor"})->name, "speakers.monitor");
  for (const Output& output : {Output{"Speakers", 0xFFFFFFFF, "microphone"}, Output{"Speakers", 7, ""}}) {
    EXPECT_FALSE(monitorOf(output));
  }
}

TEST(Monitor, ItsSamplesAreSeparatedFromAnyAddress) {
  const std::array<float, 7> samples{1, -1, 2, -2, 3, -3, 4};
  std::vector<std::byte> bytes(1 + sizeof samples);
  std::memcpy(bytes.data() + 1, samples.data(), sizeof samples);
  const auto pairs = std::span(bytes).subspan(1);
  std::array<float, 4> left{9, 9, 9, 9}, right{9, 9, 9, 9};
  EXPECT_EQ(deinterleave(pairs, left, right), 3U);
  EXPECT_THAT(left, ElementsAre(1, 2, 3, 9));
  EXPECT_THAT(right, ElementsAre(-1, -2, -3, 9));
  EXPECT_EQ(deinterleave(pairs, std::span(left).first(2), right), 2U);
  EXPECT_EQ(deinterleave(pairs, left, std::span(right).first(1)), 1U);
}

class PulseAudioTapTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto missing = SoundServer::missing(); !missing.empty()) GTEST_SKIP() << missing;
  }

  SoundServer& startServer(const std::vector<std::string>& outputs = {"speakers"}) {
    server_ = std::make_unique<SoundServer>(outputs);
    server_->enter();
    return *server_;
  }

  static bool waitFor(const std::function<bool()>& condition) { return poll(20, condition); }
  bool hears(bool bass, bool treble) {
    return waitFor([&] {
      const auto bands = source.bands();
      return (bass ? bands.bass > 0.5 : bands.bass < 0.1) && (treble ? bands.treble > 0.1 : bands.treble < 0.02);
    });
  }
  bool hearsBass() { return hears(true, false); }
  bool hearsSilence() {
    return waitFor([&] { return source.bands() == AudioBands(); });
  }
  /// True after twenty more deliveries with silence only.
  bool staysSilent() {
    const int end = source.diagnostics().audioCallbackCount + 20;
    bool silent = true;
    const bool delivered = waitFor([&] {
      silent = silent && source.bands() == AudioBands();
      return source.diagnostics().audioCallbackCount >= end;
    });
    return silent && delivered;
  }
  /// The failure's text; empty if there is none in time.
  std::string failure() {
    waitFor([&] { return source.lastError().has_value(); });
    EXPECT_FALSE(source.isRunning());
    EXPECT_EQ(source.bands(), AudioBands());
    return source.lastError().value_or("");
  }
  bool stopsPromptly() {
    const double before = now();
    source.stop();
    return now() - before < 3 && source.bands() == AudioBands();
  }
  std::string recordings() { return server_->control({"list", "short", "source-outputs"}); }
  std::string recordingNumber() { return recordings().substr(0, recordings().find('\t')); }
  TemporaryFolder folder;
  EnvironmentChange address{"PULSE_SERVER", "unix:" + folder.file("socket")};
  EnvironmentChange cookie{"PULSE_COOKIE", folder.write("cookie", std::string(256, 'c'))};
  std::unique_ptr<SoundServer> server_;
  AudioSource source{std::make_unique<PulseAudioTap>()};
};

TEST_F(PulseAudioTapTest, HearsTonesAndSilenceAndStopsPromptly) {
  auto& server = startServer();
  source.start();
  EXPECT_TRUE(staysSilent());
  auto tone = server.playSine(5000);
  EXPECT_TRUE(hears(false, true));
  tone.reset();
  EXPECT_TRUE(hearsSilence());
  tone = server.playSine(100);
  for (int round = 0; round < 3; ++round) {
    source.start();
    ASSERT_TRUE(hearsBass());
    EXPECT_GT(source.bands().level, 0.3);
    EXPECT_TRUE(stopsPromptly());
    EXPECT_TRUE(waitFor([&] { return recordings().empty(); }));
  }
}

// What plays on the default output moves along with it; the tone that waits on the new one shows when the tap is there.
TEST_F(PulseAudioTapTest, FollowsTheDefaultOutput) {
  auto& server = startServer({"first", "second"});
  const auto low = server.playSine(100, "first");
  auto high = server.playSine(5000, "second");
  source.start();
  ASSERT_TRUE(hearsBass());
  server.setDefaultSink("second");
  EXPECT_TRUE(hears(true, true));
  high.reset();
  EXPECT_TRUE(hearsBass());
}

TEST_F(PulseAudioTapTest, WaitsForAnOutputAndSurvivesItsEnd) {
  auto& server = startServer({});
  source.start();
  const std::string module = server.addSink("headphones");
  const auto low = server.playSine(100, "headphones");
  EXPECT_TRUE(hearsBass());
  server.addSink("internal");
  const auto high = server.playSine(5000, "internal");
  server.removeModule(module);
  EXPECT_TRUE(waitFor([&] { return source.bands().treble > 0.1; })) << "it was unplugged";
}

TEST_F(PulseAudioTapTest, NeverListensToAMicrophone) {
  auto& server = startServer();
  server.addModule("module-sine-source", {"source_name=microphone", "frequency=100"});
  server.control({"set-default-source", "microphone"});
  source.start();
  EXPECT_TRUE(staysSilent());
  EXPECT_FALSE(server.tryControl({"move-source-output", recordingNumber(), "microphone"}));
  EXPECT_TRUE(staysSilent());
}

TEST_F(PulseAudioTapTest, FailsWithoutAServerAndIfItOrTheRecordingEnds) {
  source.start();
  EXPECT_THAT(failure(), StartsWith("The sound server can't be reached: "));
  startServer();
  source.start();
  ASSERT_TRUE(staysSilent());
  server_->command("kill-source-output " + recordingNumber());
  EXPECT_THAT(failure(), StartsWith("The sound server refuses the recording: "));
  EXPECT_TRUE(waitFor([&] { return recordings().empty(); })) << "not started again";
  auto tone = server_->playSine(100);
  source.start();
  ASSERT_TRUE(hearsBass());
  server_->kill();
  EXPECT_THAT(failure(), StartsWith("The sound server went away: "));
}

TEST_F(PulseAudioTapTest, AServerThatHangsFallsSilentAndIsHeardAgain) {
  auto& server = startServer();
  const auto tone = server.playSine(100);
  source.start();
  ASSERT_TRUE(hearsBass());
  server.suspendProcess();
  EXPECT_TRUE(hearsSilence());
  server.resumeProcess();
  EXPECT_TRUE(hearsBass());
  server.suspendProcess();
  EXPECT_TRUE(stopsPromptly());
  server.resumeProcess();
}

TEST_F(PulseAudioTapTest, AnIdleOutputMaySleepAndIsHeardWhenItWakes) {
  auto& server = startServer();
  server.addModule("module-suspend-on-idle", {"timeout=1"});
  source.start();
  EXPECT_TRUE(waitFor([&] { return !recordings().empty(); }));
  EXPECT_TRUE(waitFor([&] { return server.control({"list", "sinks"}).find("SUSPENDED") != std::string::npos; }));
  const auto tone = server.playSine(100);
  EXPECT_TRUE(hearsBass());
}

// A socket that nobody answers on keeps the connection in the making.
TEST_F(PulseAudioTapTest, StopsAndEndsWhileConnecting) {
  const LocalListener silent(folder.file("socket"));
  const double before = now();
  for (int round = 0; round < 2; ++round) {
    source.start();
    if (round == 0) sleepBriefly();
    source.stop();
    AudioSource other(std::make_unique<PulseAudioTap>());
    other.start();
  }
  EXPECT_LT(now() - before, 20);
  EXPECT_EQ(source.lastError(), std::nullopt);
}

}  // namespace
}  // namespace veloria::tests
