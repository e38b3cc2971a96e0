#include "platform/linux/pulse/PulseAudioTap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "desktop/SoundServer.h"
#include "sources/AudioSource.h"

namespace veloria::desktop {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr double bound = 20;
constexpr double promptly = 3;

class PulseAudioTapTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto missing = SoundServer::missing(); !missing.empty()) GTEST_SKIP() << missing;
  }

  void startServer(const std::vector<std::string>& outputs = {"speakers"}) {
    server_ = std::make_unique<SoundServer>(outputs);
    server_->enter();
  }
  SoundServer& server() { return *server_; }

  static bool waitFor(const std::function<bool()>& condition) { return poll(bound, condition); }
  bool hearsBass() {
    return waitFor([&] { return source.bands().bass > 0.5 && source.bands().treble < 0.02; });
  }
  bool hearsTreble() {
    return waitFor([&] { return source.bands().treble > 0.1 && source.bands().bass < 0.1; });
  }
  bool hearsBoth() {
    return waitFor([&] { return source.bands().bass > 0.5 && source.bands().treble > 0.1; });
  }
  bool hearsSilence() {
    return waitFor([&] { return source.bands() == AudioBands(); });
  }
  /// True after `count` more deliveries during which nothing was heard.
  bool staysSilent(int count) {
    const int end = source.diagnostics().audioCallbackCount + count;
    bool silent = true;
    const bool delivered = waitFor([&] {
      silent = silent && source.bands() == AudioBands();
      return source.diagnostics().audioCallbackCount >= end;
    });
    return silent && delivered;
  }
  bool fails() {
    return waitFor([&] { return source.lastError().has_value(); });
  }
  /// The source that the one recording listens to; empty unless there is exactly one.
  std::string recordedSource() {
    const std::string list = recordings();
    if (std::ranges::count(list, '\n') != 1) return {};
    std::istringstream columns(list);
    std::string number, index;
    columns >> number >> index;
    std::istringstream sources(server().control({"list", "short", "sources"}));
    for (std::string line, name; std::getline(sources, line);) {
      std::istringstream(line) >> number >> name;
      if (number == index) return name;
    }
    return {};
  }
  std::string recordings() { return server().control({"list", "short", "source-outputs"}); }

  std::unique_ptr<SoundServer> server_;
  AudioSource source{std::make_unique<PulseAudioTap>()};
};

TEST_F(PulseAudioTapTest, silenceIsFiveZerosAndTonesRaiseTheirBands) {
  startServer();
  source.start();
  EXPECT_TRUE(staysSilent(20));
  EXPECT_EQ(source.diagnostics().lastFormatNote, "rate=48000 ch=2 flags=5 bits=32");

  auto tone = server().playSine(100);
  EXPECT_TRUE(hearsBass());
  EXPECT_GT(source.bands().level, 0.3);
  tone.reset();
  EXPECT_TRUE(hearsSilence());
  tone = server().playSine(5000);
  EXPECT_TRUE(hearsTreble());

  EXPECT_TRUE(source.isRunning());
  EXPECT_EQ(source.lastError(), std::nullopt);
  EXPECT_EQ(source.diagnostics().decodeFailures, 0);
}

TEST_F(PulseAudioTapTest, stopWhilePlayingIsPromptAndStartingAgainWorks) {
  startServer();
  const auto tone = server().playSine(100);
  for (int round = 0; round < 3; ++round) {
    source.start();
    ASSERT_TRUE(hearsBass());
    const double before = now();
    source.stop();
    EXPECT_LT(now() - before, promptly);
    EXPECT_EQ(source.bands(), AudioBands());
    const int count = source.diagnostics().callbackCount;
    EXPECT_TRUE(waitFor([&] { return recordings().empty(); }));
    EXPECT_EQ(source.diagnostics().callbackCount, count);
  }
}

// What plays on the default output moves along with it; the tone that waits on the new one tells when the tap is there.
TEST_F(PulseAudioTapTest, followsTheDefaultOutputWhileMusicPlays) {
  startServer({"first", "second", "third"});
  const auto low = server().playSine(100, "first");
  const auto high = server().playSine(5000, "second");
  source.start();
  ASSERT_TRUE(hearsBass());
  server().setDefaultSink("second");
  EXPECT_TRUE(hearsBoth());
  std::string changes;
  for (int i = 0; i < 30; ++i) changes += "set-default-sink third\nset-default-sink second\nset-default-sink first\n";
  server().command(changes);
  EXPECT_TRUE(waitFor([&] { return recordedSource() == "first.monitor"; })) << recordings();
  EXPECT_TRUE(hearsBoth());
  EXPECT_TRUE(source.isRunning());
}

TEST_F(PulseAudioTapTest, followsWhenTheOutputIsUnplugged) {
  startServer({"internal"});
  const std::string headphones = server().addSink("headphones");
  server().setDefaultSink("headphones");
  const auto low = server().playSine(100, "headphones");
  source.start();
  ASSERT_TRUE(hearsBass());
  const auto high = server().playSine(5000, "internal");
  server().removeModule(headphones);
  EXPECT_TRUE(waitFor([&] { return source.bands().treble > 0.1; }));
  EXPECT_EQ(source.lastError(), std::nullopt);
}

TEST_F(PulseAudioTapTest, waitsForAnOutputWhereThereIsNone) {
  startServer({});
  source.start();
  server().control({"info"});
  EXPECT_TRUE(source.isRunning());
  std::string module = server().addSink("late");
  auto tone = server().playSine(100, "late");
  EXPECT_TRUE(hearsBass());

  server().removeModule(module);
  EXPECT_TRUE(hearsSilence());
  EXPECT_TRUE(source.isRunning());
  module = server().addSink("later");
  tone = server().playSine(5000, "later");
  EXPECT_TRUE(hearsTreble());
}

TEST_F(PulseAudioTapTest, neverListensToAMicrophone) {
  startServer();
  server().addModule("module-sine-source", {"source_name=microphone", "frequency=100"});
  server().control({"set-default-source", "microphone"});
  source.start();
  EXPECT_TRUE(staysSilent(20));
  const std::string number = recordings().substr(0, recordings().find('\t'));
  ASSERT_FALSE(number.empty());
  EXPECT_FALSE(server().tryControl({"move-source-output", number, "microphone"}));
  EXPECT_TRUE(staysSilent(20));
}

TEST_F(PulseAudioTapTest, aKilledServerIsAFailure) {
  startServer();
  auto tone = server().playSine(100);
  source.start();
  ASSERT_TRUE(hearsBass());
  server().kill();
  ASSERT_TRUE(fails());
  EXPECT_THAT(*source.lastError(), StartsWith("The sound server went away: "));
  EXPECT_EQ(source.bands(), AudioBands());
  EXPECT_FALSE(source.isRunning());
}

TEST_F(PulseAudioTapTest, aServerThatHangsFallsSilentAndIsHeardAgain) {
  startServer();
  const auto tone = server().playSine(100);
  source.start();
  ASSERT_TRUE(hearsBass());
  server().suspendProcess();
  EXPECT_TRUE(hearsSilence());
  server().resumeProcess();
  EXPECT_TRUE(hearsBass());
  server().suspendProcess();
  const double before = now();
  source.stop();
  EXPECT_LT(now() - before, promptly);
  server().resumeProcess();
}

TEST_F(PulseAudioTapTest, anEndedRecordingIsAFailureAndNotStartedAgain) {
  startServer();
  source.start();
  ASSERT_TRUE(staysSilent(3));
  const std::string number = recordings().substr(0, recordings().find('\t'));
  server().command("kill-source-output " + number);
  ASSERT_TRUE(fails());
  EXPECT_THAT(*source.lastError(), StartsWith("The sound server refuses the recording: "));
  EXPECT_TRUE(waitFor([&] { return recordings().empty(); }));
}

TEST_F(PulseAudioTapTest, anIdleOutputMaySleepAndIsHeardWhenItWakes) {
  startServer();
  server().addModule("module-suspend-on-idle", {"timeout=1"});
  source.start();
  EXPECT_TRUE(waitFor([&] { return !recordings().empty(); }));
  const auto state = [&] { return server().control({"list", "short", "sinks"}); };
  EXPECT_TRUE(waitFor([&] { return state().find("SUSPENDED") != std::string::npos; })) << state();
  const auto tone = server().playSine(100);
  EXPECT_TRUE(hearsBass());
  server().control({"suspend-sink", "speakers", "1"});
  EXPECT_TRUE(hearsSilence());
  server().control({"suspend-sink", "speakers", "0"});
  EXPECT_TRUE(hearsBass());
}

TEST_F(PulseAudioTapTest, noServerIsAFailureWithAText) {
  const tests::TemporaryFolder folder;
  setenv("PULSE_SERVER", ("unix:" + folder.file("none")).c_str(), 1);
  setenv("PULSE_COOKIE", folder.write("cookie", std::string(256, 'c')).c_str(), 1);
  source.start();
  ASSERT_TRUE(fails());
  EXPECT_THAT(*source.lastError(), StartsWith("The sound server can't be reached: "));
  EXPECT_FALSE(source.isRunning());
}

TEST_F(PulseAudioTapTest, aServerThatRefusesIsAFailure) {
  startServer();
  setenv("PULSE_SERVER", server().addClosedAddress().c_str(), 1);
  source.start();
  ASSERT_TRUE(fails());
  EXPECT_THAT(*source.lastError(), HasSubstr("Access denied"));
}

// A socket that nobody answers on: the connection is being made for as long as one likes.
class SilentSocket {
 public:
  explicit SilentSocket(const std::string& path) : descriptor_(socket(AF_UNIX, SOCK_STREAM, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    listen(descriptor_, 10);
  }
  ~SilentSocket() { close(descriptor_); }
  SilentSocket(const SilentSocket&) = delete;
  SilentSocket& operator=(const SilentSocket&) = delete;

 private:
  int descriptor_;
};

TEST_F(PulseAudioTapTest, stopsAndGoesWhileConnecting) {
  const tests::TemporaryFolder folder;
  const SilentSocket socket(folder.file("silent"));
  setenv("PULSE_SERVER", ("unix:" + folder.file("silent")).c_str(), 1);
  setenv("PULSE_COOKIE", folder.write("cookie", std::string(256, 'c')).c_str(), 1);
  const double before = now();
  for (int round = 0; round < 100; ++round) {
    source.start();
    if (round % 10 == 0) sleepBriefly();
    source.stop();
    AudioSource other(std::make_unique<PulseAudioTap>());
    other.start();
  }
  EXPECT_LT(now() - before, bound);
  EXPECT_EQ(source.lastError(), std::nullopt);
  PulseAudioTap untouched;
  untouched.stop();
}

}  // namespace
}  // namespace veloria::desktop
