// The built program, but for `nimbra run`.

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#include "NimbraFixture.h"
#include "cli/CommandDescription.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class NimbraTest : public NimbraFixture {
 protected:
  void putState(const std::string& bytes) {
    fs::create_directories(dataHome + "/Veloria");
    std::ofstream(statePath, std::ios::binary) << bytes;
  }
};

testing::AssertionResult isOneLine(const std::string& text) {
  const bool one = text.size() > 1 && text.find('\n') == text.size() - 1;
  return (one ? testing::AssertionSuccess() : testing::AssertionFailure()) << testing::PrintToString(text);
}

TEST_F(NimbraTest, ADayOfWrites) {
  const auto quiet = [&](const std::vector<std::string>& arguments) {
    const ProcessResult result = nimbra(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.output + result.errors, "");
  };
  quiet({"busy", "--session", "build", "--ttl", "600"});
  quiet({"set", "a0", "-0.25"});
  quiet({"palette", "#FF0055", "ffcc00", "#00ddff"});
  quiet({"fail"});
  const json now = state();
  EXPECT_EQ(now["busy"], 1);
  EXPECT_EQ(now["err"], 1);
  EXPECT_EQ(now["a0"], -0.25);
  EXPECT_EQ(now["palette"], json({"#ff0055", "#ffcc00", "#00ddff"}));
  EXPECT_GT(now["alert_until"], 1.7e9);
  quiet({"ok"});
  quiet({"palette", "clear"});
  quiet({"unset", "a0"});
  quiet({"idle", "--session=build"});
  EXPECT_EQ(nimbra({"status"}).output, "channels: ok 1\nsession default: ok 1\nVeloria is not running\n");
  quiet({"clear"});
  EXPECT_EQ(state(), json({{"busy", 0}, {"ok", 0}, {"err", 0}, {"a0", 0}, {"alert_until", 0}}));
}

TEST_F(NimbraTest, TheLifetimeOfAChannelIsNobodyElses) {
  shell("nimbra busy; nimbra set a0 1 --ttl 600; nimbra set err 1 --ttl 600");
  const json sessions = state()["sessions"];
  EXPECT_EQ(sessions["default"], json({{"busy", 1}, {"ok", 0}, {"err", 0}}));
  EXPECT_THAT(sessions["set-a0"], testing::UnorderedElementsAre(1, testing::Gt(1.7e9)));
  shell("nimbra set a0 0.5; nimbra ok");
  EXPECT_EQ(state(), json({{"a0", 0.5},
                           {"busy", 0},
                           {"ok", 1},
                           {"err", 0},
                           {"sessions", {{"default", {{"busy", 0}, {"ok", 1}, {"err", 0}}}}}}))
      << "what is said again without a lifetime stays";
}

TEST_F(NimbraTest, SaysWhatItWroteWhenAsked) {
  const ProcessResult result = nimbra({"busy", "-v", "--session", "build"});
  EXPECT_EQ(result.output, "");
  EXPECT_TRUE(isOneLine(result.errors));
  EXPECT_THAT(result.errors, HasSubstr("busy 1, ok 0, err 0 in session 'build'"));
}

TEST_F(NimbraTest, WrongUsageIsOneLineAndChangesNothing) {
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{{},
                                                                                         {"bsuy"},
                                                                                         {"set", "a0"},
                                                                                         {"set", "palette", "1"},
                                                                                         {"set", "a0", "1,5"},
                                                                                         {"palette", "red", "blue"},
                                                                                         {"palette", "clear", "clear"},
                                                                                         {"busy", "--ttl", "nan"},
                                                                                         {"preset", "a\nb"},
                                                                                         {"run"}}) {
    const ProcessResult result = nimbra(arguments);
    EXPECT_EQ(result.exitCode, 2) << testing::PrintToString(arguments);
    EXPECT_TRUE(isOneLine(result.errors)) << testing::PrintToString(arguments);
    EXPECT_THAT(result.errors, StartsWith("nimbra"));
    EXPECT_EQ(result.output, "");
  }
  EXPECT_THAT(nimbra({"set", "a0"}).errors, StartsWith("nimbra set: "));
  EXPECT_FALSE(fs::exists(dataHome));
}

TEST_F(NimbraTest, EveryCommandTellsItsOptionsAndExists) {
  const std::string general = nimbra({"--help"}).output;
  for (const auto& command : cli::commandDescriptions()) {
    const std::string name(command.name);
    EXPECT_THAT(general, HasSubstr("nimbra " + name));
    const ProcessResult help = nimbra({name, "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.output, StartsWith("Usage: nimbra " + name));
    EXPECT_EQ(help.output.find("--session") != std::string::npos, command.session) << name;
    EXPECT_THAT(nimbra({name, "--no-such-option"}).errors, HasSubstr("none of its options")) << name;
  }
  EXPECT_THAT(nimbra({"--version"}).output, StartsWith("nimbra "));
}

TEST_F(NimbraTest, FiftyWritersLoseNothing) {
  constexpr int count = 50;
  std::vector<std::unique_ptr<desktop::ChildProcess>> writers;
  for (int i = 0; i < count; ++i) {
    writers.push_back(start({"set", "name" + std::to_string(i), std::to_string(i)}));
  }
  int reads = 0;
  const bool ended = desktop::poll(60, [&] {
    if (fs::exists(statePath)) {
      EXPECT_TRUE(state().is_object()) << "after " << reads << " reads";
    }
    ++reads;
    return std::ranges::none_of(writers, [](const auto& writer) { return writer->running(); });
  });
  ASSERT_TRUE(ended);
  for (auto& writer : writers) EXPECT_EQ(writer->wait(0), 0) << writer->output();
  EXPECT_EQ(state().size(), count);
  for (int i = 0; i < count; ++i) EXPECT_EQ(channel("name" + std::to_string(i)), i);
  EXPECT_GT(reads, 1);
}

TEST_F(NimbraTest, ABrokenFileDoesNotStopAHook) {
  putState("{\"busy\": ");
  EXPECT_EQ(nimbra({"status"}).exitCode, 1);
  const ProcessResult result = nimbra({"fail"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_TRUE(isOneLine(result.errors));
  EXPECT_THAT(result.errors, HasSubstr("state.json.rejected"));
  EXPECT_EQ(channel("err"), 1);
  EXPECT_EQ(nimbra({"fail"}).errors, "");
}

TEST_F(NimbraTest, ObstaclesAreAnErrorOfOneLine) {
  fs::create_directories(dataHome + "/Veloria");
  ASSERT_EQ(::mkfifo(statePath.c_str(), 0600), 0);
  for (const char* command : {"busy", "status"}) {
    const ProcessResult result = nimbra({command});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(isOneLine(result.errors));
  }
  fs::remove_all(dataHome);
  folder.write("data", "in the folder's place");
  EXPECT_EQ(nimbra({"busy"}).exitCode, 1);
  EXPECT_TRUE(isOneLine(nimbra({"busy"}).errors));
}

TEST_F(NimbraTest, LoadsNoToolkit) {
  const ProcessResult result = shell("ldd '" + program() + "'");
  ASSERT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("libc.so"));
  for (const char* library : {"libicu", "libQt", "libvulkan", "libxcb"}) {
    EXPECT_THAT(result.output, Not(HasSubstr(library)));
  }
}

/// Stands in for the application: answers one question.
class FakeApplication {
 public:
  FakeApplication(const std::string& runtimeFolder, std::string answer) : answer_(std::move(answer)) {
    fs::create_directory(runtimeFolder + "/Veloria");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = runtimeFolder + "/Veloria/control";
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    fs::remove(path);
    listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 || ::listen(listener_, 1) != 0) {
      throw std::runtime_error("can't listen at " + path);
    }
    thread_ = std::thread([this] { answerOne(); });
  }
  ~FakeApplication() {
    ::shutdown(listener_, SHUT_RDWR);
    thread_.join();
    ::close(listener_);
  }

  /// Once the client has ended.
  const std::string& question() const { return question_; }

 private:
  void answerOne() {
    const int client = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0) return;
    char c = 0;
    while (::read(client, &c, 1) == 1 && c != '\n') question_ += c;
    const std::string line = answer_ + "\n";
    [[maybe_unused]] const auto written = ::send(client, line.data(), line.size(), MSG_NOSIGNAL);
    ::close(client);
  }

  std::string answer_;
  std::string question_;
  int listener_ = -1;
  std::thread thread_;
};

TEST_F(NimbraTest, CommandsReachTheRunningApplication) {
  const std::vector<std::pair<std::vector<std::string>, json>> cases{
      {{"preset", "Northern Lights"}, {{"command", "preset"}, {"name", "Northern Lights"}}},
      {{"pause"}, {{"command", "pause"}}},
      {{"resume"}, {{"command", "resume"}}}};
  for (const auto& [arguments, question] : cases) {
    const FakeApplication application(folder.path(), "{}");
    const ProcessResult result = nimbra(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.output + result.errors, "");
    EXPECT_EQ(json::parse(application.question()), question);
  }
  {
    const FakeApplication application(folder.path(), R"({"running": true})");
    EXPECT_THAT(nimbra({"status"}).output, EndsWith("Veloria is running\n"));
  }
  EXPECT_THAT(nimbra({"status"}).output, EndsWith("Veloria is not running\n"));
}

TEST_F(NimbraTest, WhatTheApplicationRefusesIsAnError) {
  const std::vector<std::pair<const char*, const char*>> answers{
      {R"({"error": "there is no look 'x'\u001b"})", "nimbra preset: there is no look 'x'?\n"},
      {R"({"error": 5})", "nimbra preset: it did not work.\n"},
      {"[", "nimbra preset: the running application's answer makes no sense.\n"}};
  for (const auto& [answer, line] : answers) {
    const FakeApplication application(folder.path(), answer);
    const ProcessResult result = nimbra({"preset", "x"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, line);
  }
  for (const char* command : {"pause", "resume"}) {
    const ProcessResult result = nimbra({command});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(isOneLine(result.errors));
    EXPECT_THAT(result.errors, HasSubstr("not running"));
  }
}

}  // namespace
}  // namespace veloria::tests
