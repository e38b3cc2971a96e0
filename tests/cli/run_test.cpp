// `nimbra run`, with real programs, signals and terminals.

#include <gmock/gmock.h>

#include "NimbraFixture.h"
#include "PtySession.h"
#include "base/MediaClock.h"

namespace veloria::tests {
namespace {

using nlohmann::json;
using testing::HasSubstr;

class RunTest : public NimbraFixture {
 protected:
  void expectOutcome(double ok, double err, const std::string& what) const {
    const json now = state();
    EXPECT_EQ(json({now["busy"], now["ok"], now["err"]}), json({0, ok, err})) << what;
    EXPECT_EQ(now["sessions"].size(), 1U) << what;
  }
};

TEST_F(RunTest, PassesOnTheEndAndReportsIt) {
  const std::string status = "exec python3 -c 'import subprocess, sys; print(subprocess.call(sys.argv[1:]))' ";
  for (const auto& [script, ended] : {std::pair{"exit 0", "0\n"}, {"exit 3", "3\n"}, {"kill -SEGV $$", "-11\n"}}) {
    EXPECT_EQ(shell(status + "nimbra run -- sh -c '" + script + "'").output, ended);
    const bool ok = std::string_view("exit 0") == script;
    expectOutcome(ok ? 1 : 0, ok ? 0 : 1, script);
  }
  EXPECT_EQ(shell("trap '' CHLD; exec nimbra run -- sh -c 'exit 3'").exitCode, 3);
}

TEST_F(RunTest, BusyStandsInTheFileWhileItRuns) {
  const json during = json::parse(nimbra({"run", "--", "cat", statePath}).output);
  EXPECT_EQ(during["busy"], 1);
  EXPECT_THAT(during["sessions"].begin().key(), testing::StartsWith("run-"));
  EXPECT_NEAR(during["sessions"].begin().value()["expires"], wallTime() + 60, 30);
  expectOutcome(1, 0, "the session default");
  const ProcessResult named = nimbra({"run", "-v", "--session", "build", "cat", statePath});
  EXPECT_EQ(json::parse(named.output)["sessions"]["build"]["busy"], 1);
  EXPECT_EQ(session("build"), json({{"busy", 0}, {"ok", 1}, {"err", 0}}));
}

TEST_F(RunTest, StreamsArgumentsAndFolderAreTheCommands) {
  const ProcessResult result =
      shell("printf hello | nimbra run -- sh -c 'tr a-z A-Z; pwd; printf \"%s|\" \"$@\" >&2' name '' 'a  b' --help -v");
  EXPECT_EQ(result.output, "HELLO" + std::filesystem::canonical(folder.path()).string() + "\n");
  EXPECT_EQ(result.errors, "|a  b|--help|-v|");
}

TEST_F(RunTest, WhatCantBeStartedIsAFailureAtOnce) {
  const ProcessResult missing = nimbra({"run", "--", "no-such-program-here"});
  EXPECT_EQ(missing.exitCode, 127);
  EXPECT_THAT(missing.errors, HasSubstr("was not found\n"));
  expectOutcome(0, 1, "missing");
  EXPECT_EQ(nimbra({"run", "--", folder.write("plain.txt", "text")}).exitCode, 126);
}

TEST_F(RunTest, SignalsToNimbraAloneArePassedOnOnce) {
  for (const auto& [number, name] : std::initializer_list<std::pair<int, std::string>>{
           {SIGTERM, "TERM"}, {SIGHUP, "HUP"}, {SIGINT, "INT"}, {SIGUSR1, "USR1"}}) {
    const auto process = start({program, "run", "--", "/bin/sh", "-c",
                                "trap 'echo got; kill $!; exit 7' " + name + "; sleep 100 & echo ready; wait"},
                               "ready");
    process->signal(number);
    EXPECT_EQ(process->wait(patience), 7) << name;
    EXPECT_EQ(process->output(), "ready\ngot\n");
  }
}

TEST_F(RunTest, SignalsAreAsTheyWereForTheCommand) {
  const std::string list = "grep -E '^Sig(Blk|Ign|Cgt)' /proc/self/status";
  for (const std::string before : {"", "trap '' TERM HUP; "}) {
    const std::string plain = shell(before + "exec " + list).output;
    EXPECT_THAT(plain, HasSubstr("SigBlk"));
    EXPECT_EQ(shell(before + "exec nimbra run -- " + list).output, plain);
  }
}

TEST_F(RunTest, BusyIsRenewed) {
  const auto process = start(
      {program, "run", "--session", "build", "--ttl", "0.6", "--", "sh", "-c", "echo ready; exec sleep 100"}, "ready");
  const double first = session("build")["expires"];
  EXPECT_TRUE(poll(patience, [&] { return session("build")["expires"] > first + 0.3; }));
}

TEST_F(RunTest, AFileThatCantBeWrittenCostsOneLine) {
  folder.write("data", "in the folder's place");
  const ProcessResult result = nimbra({"run", "-v", "--ttl", "0.3", "--", "sh", "-c", "echo out; sleep 0.5; exit 5"});
  EXPECT_EQ(result.exitCode, 5);
  EXPECT_EQ(result.output, "out\n");
  EXPECT_THAT(result.errors, testing::MatchesRegex("nimbra run: [^\n]*\n"));
}

TEST_F(RunTest, CtrlCReachesTheCommandOnce) {
  // Shells count two signals that are close as one.
  const std::string countingProgram = R"(import os, signal, time
out, into = os.pipe()
os.set_blocking(into, False)
signal.set_wakeup_fd(into)
signal.signal(signal.SIGINT, lambda *_: None)
print('ready', flush=True)
os.read(out, 1)
time.sleep(0.3)
os.write(into, b'.')
print('further signals:', len(os.read(out, 100)) - 1))";
  PtySession terminal({program, "run", "--", "python3", "-c", countingProgram}, environment());
  ASSERT_TRUE(terminal.waitFor("ready"));
  terminal.type("\x03");
  EXPECT_TRUE(terminal.waitFor("further signals: 0")) << terminal.screen();
}

TEST_F(RunTest, CtrlZStopsAndForegroundGoesOn) {
  PtySession terminal({"bash", "--norc", "-c",
                       "set -m; nimbra run --session build --ttl 600 -- sh -c 'echo ready; read line; echo line $line; "
                       "exit 6'; echo stopped $?; read go; fg; echo code $?"},
                      environment());
  ASSERT_TRUE(terminal.waitFor("ready"));
  const double before = session("build")["expires"];
  terminal.type("\x1a");
  ASSERT_TRUE(terminal.waitFor("stopped 148")) << terminal.screen();  // 128 + SIGTSTP
  terminal.type("\n");
  EXPECT_TRUE(poll(patience, [&] { return session("build")["expires"] > before; })) << "renewed when it goes on";
  terminal.type("words\n");
  ASSERT_TRUE(terminal.waitFor("code 6")) << terminal.screen();
  EXPECT_THAT(terminal.screen(), HasSubstr("line words"));
  EXPECT_EQ(session("build")["busy"], 0);
}

}  // namespace
}  // namespace veloria::tests
