// The built program, but for `nimbra run`.

#include <gmock/gmock.h>

#include "NimbraFixture.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class NimbraTest : public NimbraFixture {
 protected:
  void expectComplaint(const Texts& arguments, int exitCode, const std::string& part = "nimbra") const {
    const ProcessResult result = nimbra(arguments);
    EXPECT_EQ(result.exitCode, exitCode) << testing::PrintToString(arguments);
    EXPECT_THAT(result.errors, testing::AllOf(StartsWith("nimbra"), HasSubstr(part)));
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << "one line: " << result.errors;
    EXPECT_EQ(result.output, "");
  }
};

TEST_F(NimbraTest, ADayOfWrites) {
  const auto quiet = [&](const Texts& arguments) {
    const ProcessResult result = nimbra(arguments);
    EXPECT_EQ(std::to_string(result.exitCode) + result.output + result.errors, "0");
  };
  quiet({"busy", "--session", "build", "--ttl", "600"});
  quiet({"set", "a0", "-0.25"});
  quiet({"set", "a1", "1", "--ttl", "600"});
  quiet({"palette", "#FF0055", "ffcc00", "#00ddff"});
  quiet({"fail"});
  const json now = state();
  EXPECT_EQ(json({now["busy"], now["err"], now["a0"]}), json({1, 1, -0.25}));
  EXPECT_EQ(now["palette"], json({"#ff0055", "#ffcc00", "#00ddff"}));
  EXPECT_GT(now["alert_until"], 1.7e9);
  EXPECT_EQ(session("set-a1")["a1"], 1);
  quiet({"ok"});
  quiet({"palette", "clear"});
  quiet({"unset", "a0"});
  quiet({"set", "a1", "0"});
  quiet({"idle", "--session=build"});
  EXPECT_EQ(nimbra({"status"}).output, "channels: ok 1\nsession default: ok 1\nVeloria is not running\n");
  quiet({"clear"});
  EXPECT_EQ(state(), json({{"busy", 0}, {"ok", 0}, {"err", 0}, {"a0", 0}, {"a1", 0}, {"alert_until", 0}}));
}

TEST_F(NimbraTest, WrongUsageIsOneLineAndChangesNothing) {
  for (const Texts& arguments : {Texts{}, {"set", "palette", "1"}, {"palette", "red", "blue"}, {"preset", "a\nb"}}) {
    expectComplaint(arguments, 2);
  }
  expectComplaint({"bsuy"}, 2, "'bsuy'");
  expectComplaint({"set", "a0"}, 2, "nimbra set: ");
  EXPECT_FALSE(fs::exists(dataHome));
  const auto version = nimbra({"--version"});
  EXPECT_THAT(version.output, testing::MatchesRegex("nimbra [0-9.]+\n"));
  EXPECT_EQ(version.exitCode, 0);
}

TEST_F(NimbraTest, FiftyWritersLoseNothing) {
  std::vector<std::unique_ptr<ChildProcess>> writers;
  for (int i = 0; i < 50; ++i)
    writers.push_back(start({program, "set", "name" + std::to_string(i), std::to_string(i)}));
  bool whole = true;
  EXPECT_TRUE(poll(60, [&] {
    whole = whole && (!fs::exists(statePath) || state().is_object());
    return std::ranges::none_of(writers, [](const auto& writer) { return writer->running(); });
  }));
  EXPECT_TRUE(whole) << "read while it was written";
  for (int i = 0; i < 50; ++i) EXPECT_EQ(channel("name" + std::to_string(i)), i);
}

TEST_F(NimbraTest, ABrokenFileStopsNoHookAndAnObstacleIsAnErrorOfOneLine) {
  fs::create_directories(dataHome + "/Veloria");
  std::ofstream(statePath) << "{\"busy\": ";
  expectComplaint({"status"}, 1);
  expectComplaint({"fail"}, 0, "state.json.rejected");
  EXPECT_EQ(channel("err"), 1);
  fs::remove(statePath);
  fs::create_directory(statePath);
  expectComplaint({"busy"}, 1);
}

TEST_F(NimbraTest, CommandsReachTheRunningApplication) {
  fs::create_directory(folder.path() + "/Veloria");
  const std::string socket = folder.path() + "/Veloria/control";
  // Stands in for the application: answers one question and prints it.
  const auto application = [&](const std::string& answer) {
    fs::remove(socket);
    return start({"python3", "-c",
                  R"(import socket, sys
listener = socket.socket(socket.AF_UNIX)
listener.bind(sys.argv[1])
listener.listen()
print('ready', flush=True)
client = listener.accept()[0]
print(client.makefile().readline())
client.sendall(sys.argv[2].encode() + b'\n'))",
                  socket, answer},
                 "ready");
  };
  const std::initializer_list<std::tuple<Texts, const char*, const char*, std::string>> cases{
      {{"preset", "Northern Lights"}, R"({"command":"preset","name":"Northern Lights"})", "{}", ""},
      {{"pause"}, R"({"command":"pause"})", "{}", ""},
      {{"resume"}, R"({"command":"resume"})", "{}", ""},
      {{"preset", "x"}, "", R"({"error": "there is no look 'x'\u001b"})", "nimbra preset: there is no look 'x'?\n"},
      {{"preset", "x"}, "", "[", "nimbra preset: the running application gave an invalid answer.\n"}};
  for (const auto& [arguments, question, answer, errors] : cases) {
    const auto running = application(answer);
    const ProcessResult result = nimbra(arguments);
    EXPECT_EQ(result.output + result.errors, errors);
    EXPECT_EQ(result.exitCode, errors.empty() ? 0 : 1);
    EXPECT_EQ(running->wait(patience), 0);
    EXPECT_THAT(running->output(), HasSubstr(question));
  }
  const auto running = application("{}");
  EXPECT_THAT(nimbra({"status"}).output, EndsWith("Veloria is running\n"));
  EXPECT_EQ(running->wait(patience), 0);
  expectComplaint({"pause"}, 1, "not running");
}

}  // namespace
}  // namespace veloria::tests
