// `nimbra run`, with real programs, signals and terminals.

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "NimbraFixture.h"
#include "PtySession.h"
#include "base/MediaClock.h"

namespace veloria::tests {
namespace {

using nlohmann::json;
using testing::HasSubstr;

class RunTest : public NimbraFixture {
 protected:
  /// How `nimbra run -- sh -c SCRIPT` ends, as waitpid() tells it.
  int statusOf(const char* script, bool ignoresChildren = false) const {
    const pid_t pid = ::fork();
    if (pid == 0) {
      if (ignoresChildren) std::signal(SIGCHLD, SIG_IGN);
      ::setenv("XDG_DATA_HOME", dataHome.c_str(), 1);
      ::execl(program.c_str(), "nimbra", "run", "--", "/bin/sh", "-c", script, nullptr);
      ::_exit(99);
    }
    int status = -1;
    ::waitpid(pid, &status, 0);
    return status;
  }
  void expectOutcome(double ok, double err, const std::string& what) const {
    const json now = state();
    EXPECT_EQ(json({now["busy"], now["ok"], now["err"]}), json({0, ok, err})) << what;
    EXPECT_EQ(now["sessions"].size(), 1U) << what;
  }
};

/// A program that does `atFirst` and tells how often a signal came to it. Shells count two that are close as one.
std::string countingProgram(const std::string& atFirst = "pass") {
  return "import os, signal, time\n"
         "out, into = os.pipe()\n"
         "os.set_blocking(into, False)\n"
         "signal.set_wakeup_fd(into)\n"
         "for number in (signal.SIGINT, signal.SIGTERM): signal.signal(number, lambda *_: None)\n"
         "print('ready', flush=True)\n" +
         atFirst +
         "\n"
         "count = len(os.read(out, 1))\n"
         "time.sleep(0.3)\n"
         "os.set_blocking(out, False)\n"
         "try: count += len(os.read(out, 100))\n"
         "except BlockingIOError: pass\n"
         "print('signals:', count)\n";
}

TEST_F(RunTest, PassesOnTheEndAndReportsIt) {
  const std::tuple<const char*, int, bool> cases[] = {
      {"exit 0", W_EXITCODE(0, 0), false},
      {"exit 3", W_EXITCODE(3, 0), false},
      {"exit 3", W_EXITCODE(3, 0), true},
      {"kill -KILL $$", W_EXITCODE(0, SIGKILL), false},
      {"kill -SEGV $$", W_EXITCODE(0, SIGSEGV), false},
  };
  for (const auto& [script, status, ignoresChildren] : cases) {
    EXPECT_EQ(statusOf(script, ignoresChildren), status) << script;
    expectOutcome(status == 0 ? 1 : 0, status == 0 ? 0 : 1, script);
  }
}

TEST_F(RunTest, BusyStandsInTheFileWhileItRuns) {
  const json during = json::parse(nimbra({"run", "--", "cat", statePath}).output);
  EXPECT_EQ(during["busy"], 1);
  ASSERT_EQ(during["sessions"].size(), 1);
  EXPECT_THAT(during["sessions"].begin().key(), testing::StartsWith("run-"));
  EXPECT_NEAR(during["sessions"].begin().value()["expires"], wallTime() + 60, 30);
  expectOutcome(1, 0, "the session default");
  const ProcessResult named = nimbra({"run", "-v", "--session", "build", "cat", statePath});
  EXPECT_EQ(json::parse(named.output)["sessions"]["build"]["busy"], 1);
  EXPECT_EQ(named.errors, "nimbra run: wrote busy in session 'build'\nnimbra run: wrote ok in session 'build'\n");
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
  EXPECT_EQ(missing.errors, "nimbra run: 'no-such-program-here' was not found\n");
  expectOutcome(0, 1, "missing");
  EXPECT_EQ(nimbra({"run", "--", folder.write("plain.txt", "text")}).exitCode, 126);
  EXPECT_EQ(nimbra({"run", "--", ""}).exitCode, 127);
}

TEST_F(RunTest, SignalsToNimbraAloneArePassedOnOnce) {
  const std::initializer_list<std::pair<int, std::string>> signals{
      {SIGTERM, "TERM"}, {SIGHUP, "HUP"}, {SIGINT, "INT"}, {SIGQUIT, "QUIT"}, {SIGUSR1, "USR1"}, {SIGUSR2, "USR2"}};
  for (const auto& [number, name] : signals) {
    const auto process = start({program, "run", "--", "/bin/sh", "-c",
                                "trap 'echo got; kill $!; exit 7' " + name + "; sleep 100 & echo ready; wait"},
                               "ready");
    EXPECT_EQ(channel("busy"), 1);
    process->signal(number);
    EXPECT_EQ(process->wait(patience), 7) << name;
    EXPECT_EQ(process->output(), "ready\ngot\n") << name;
  }
}

TEST_F(RunTest, WhatTheCommandSendsToItsGroupDoesNotComeBack) {
  const auto process = start({program, "run", "--", "python3", "-c",
                              countingProgram("for _ in range(20): os.kill(0, signal.SIGTERM); time.sleep(0.01)")});
  EXPECT_EQ(process->wait(patience), 0);
  EXPECT_THAT(process->output(), HasSubstr("signals: 20\n"));
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
  PtySession terminal({program, "run", "--", "python3", "-c", countingProgram()}, environment());
  ASSERT_TRUE(terminal.waitFor("ready"));
  terminal.type("\x03");
  EXPECT_EQ(terminal.waitForEnd(), 0) << terminal.screen();
  EXPECT_THAT(terminal.screen(), HasSubstr("signals: 1"));
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
