// `nimbra run`, with real programs, signals and terminals.

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "NimbraFixture.h"
#include "PtySession.h"
#include "base/MediaClock.h"

namespace veloria::tests {
namespace {

using desktop::poll;
using nlohmann::json;
using testing::HasSubstr;

constexpr double patience = 20;

class RunTest : public NimbraFixture {
 protected:
  /// `nimbra run OPTIONS -- sh -c SCRIPT`, once the script has said "ready".
  std::unique_ptr<desktop::ChildProcess> startScript(const std::string& script, std::vector<std::string> options = {}) {
    options.insert(options.begin(), "run");
    options.insert(options.end(), {"--", "/bin/sh", "-c", script});
    auto process = start(options);
    EXPECT_TRUE(poll(patience, [&] { return process->output().find("ready") != std::string::npos; }));
    return process;
  }

  /// How `nimbra run -- sh -c SCRIPT` ends, as waitpid() tells it.
  int statusOf(const char* script, bool ignoresChildren = false) const {
    const pid_t pid = ::fork();
    if (pid == 0) {
      if (ignoresChildren) std::signal(SIGCHLD, SIG_IGN);
      ::setenv("XDG_DATA_HOME", dataHome.c_str(), 1);
      ::execl(program().c_str(), "nimbra", "run", "--", "/bin/sh", "-c", script, nullptr);
      ::_exit(99);
    }
    int status = -1;
    ::waitpid(pid, &status, 0);
    return status;
  }

  json sessionOf(const std::string& name) const {
    const json now = state();
    return now.is_object() && now.contains("sessions") ? now["sessions"].value(name, json()) : json();
  }
};

/// A script that waits and ends with code 7 on the signal, having said so.
std::string trapScript(const std::string& signal) {
  return "trap 'echo got; kill $!; exit 7' " + signal + "; sleep 100 & echo ready; wait";
}

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

std::size_t occurrences(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST_F(RunTest, PassesOnTheEndAndReportsIt) {
  struct Case {
    const char* script;
    int status;  ///< as waitpid() gives it
    double ok;
    double err;
  };
  for (const auto& [script, status, ok, err] : std::vector<Case>{
           {"exit 0", W_EXITCODE(0, 0), 1, 0},
           {"exit 3", W_EXITCODE(3, 0), 0, 1},
           {"kill -TERM $$", W_EXITCODE(0, SIGTERM), 0, 1},
           {"kill -KILL $$", W_EXITCODE(0, SIGKILL), 0, 1},
           {"kill -SEGV $$", W_EXITCODE(0, SIGSEGV), 0, 1},
       }) {
    EXPECT_EQ(statusOf(script), status) << script;
    EXPECT_EQ(channel("busy"), 0) << script;
    EXPECT_EQ(channel("ok"), ok) << script;
    EXPECT_EQ(channel("err"), err) << script;
    EXPECT_FALSE(hasSession("run-")) << script;
  }
}

TEST_F(RunTest, KnowsTheEndWhereChildrenWereIgnored) {
  EXPECT_EQ(statusOf("exit 3", true), W_EXITCODE(3, 0));
}

TEST_F(RunTest, BusyStandsInTheFileWhileItRuns) {
  const ProcessResult result = nimbra({"run", "--", "cat", statePath});
  ASSERT_EQ(result.exitCode, 0) << result.errors;
  const json during = json::parse(result.output);
  EXPECT_EQ(during["busy"], 1);
  ASSERT_EQ(during["sessions"].size(), 1);
  EXPECT_THAT(during["sessions"].begin().key(), testing::StartsWith("run-"));
  EXPECT_NEAR(during["sessions"].begin().value()["expires"], wallTime() + 60, 30);
  EXPECT_EQ(state()["sessions"], json({{"default", {{"busy", 0}, {"ok", 1}, {"err", 0}}}}));

  const json named = json::parse(nimbra({"run", "--session", "build", "cat", statePath}).output);
  EXPECT_EQ(named["sessions"]["build"]["busy"], 1);
  EXPECT_EQ(sessionOf("build"), json({{"busy", 0}, {"ok", 1}, {"err", 0}}));
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
  EXPECT_EQ(channel("busy"), 0);
  EXPECT_EQ(channel("err"), 1);
  EXPECT_FALSE(hasSession("run-"));
  const ProcessResult forbidden = nimbra({"run", "--", folder.write("plain.txt", "text")});
  EXPECT_EQ(forbidden.exitCode, 126);
  EXPECT_EQ(channel("busy"), 0);
  EXPECT_EQ(nimbra({"run", "--", ""}).exitCode, 127);
}

TEST_F(RunTest, SignalsToNimbraAloneArePassedOn) {
  const std::vector<std::pair<int, const char*>> signals{{SIGTERM, "TERM"}, {SIGHUP, "HUP"},   {SIGINT, "INT"},
                                                         {SIGQUIT, "QUIT"}, {SIGUSR1, "USR1"}, {SIGUSR2, "USR2"}};
  for (const auto& [number, name] : signals) {
    const auto process = startScript(trapScript(name));
    EXPECT_EQ(channel("busy"), 1);
    process->signal(number);
    EXPECT_EQ(process->wait(patience), 7) << name;
    EXPECT_EQ(occurrences(process->output(), "got"), 1) << name;
    EXPECT_EQ(channel("busy"), 0) << name;
  }
}

TEST_F(RunTest, ASignalToTheGroupEndsBothInOrder) {
  const auto process = startScript("sleep 100 & echo ready; wait");
  ::kill(-process->pid(), SIGINT);
  EXPECT_EQ(process->wait(patience), 128 + SIGINT);
  EXPECT_EQ(channel("busy"), 0);
  EXPECT_EQ(channel("err"), 1);
}

TEST_F(RunTest, WhatTheCommandSendsToItsGroupDoesNotComeBack) {
  const auto process = start({"run", "--", "python3", "-c",
                              countingProgram("for _ in range(20): os.kill(0, signal.SIGTERM); time.sleep(0.01)")});
  EXPECT_EQ(process->wait(patience), 0);
  EXPECT_THAT(process->output(), HasSubstr("signals: 20\n"));
}

TEST_F(RunTest, SignalsAreAsTheyWereForTheCommand) {
  const std::string list = "grep -E '^Sig(Blk|Ign|Cgt)' /proc/self/status";
  for (const std::string& before : {std::string(), std::string("trap '' TERM HUP; ")}) {
    const ProcessResult plain = shell(before + "exec " + list);
    const ProcessResult through = shell(before + "exec nimbra run -- " + list);
    EXPECT_THAT(plain.output, HasSubstr("SigBlk"));
    EXPECT_EQ(through.output, plain.output);
  }
}

TEST_F(RunTest, AKilledNimbraIsForgotten) {
  const auto process = startScript("echo ready; exec sleep 100", {"--session", "build", "--ttl", "1"});
  process->signal(SIGKILL);
  ASSERT_EQ(process->wait(patience), 128 + SIGKILL);
  EXPECT_EQ(sessionOf("build")["busy"], 1) << "nobody was there to end it";
  EXPECT_TRUE(poll(patience, [&] { return shownChannel("busy") == 0; }));
}

TEST_F(RunTest, BusyIsRenewed) {
  const auto process = startScript("echo ready; exec sleep 100", {"--session", "build", "--ttl", "3"});
  const double first = sessionOf("build")["expires"];
  EXPECT_TRUE(poll(patience, [&] { return sessionOf("build")["expires"] > first + 1.5; }));
  EXPECT_EQ(shownChannel("busy"), 1);
}

TEST_F(RunTest, AFileThatCantBeWrittenCostsOneLine) {
  folder.write("data", "in the folder's place");
  const ProcessResult result = nimbra({"run", "--ttl", "0.3", "--", "sh", "-c", "echo out; sleep 0.5; exit 5"});
  EXPECT_EQ(result.exitCode, 5);
  EXPECT_EQ(result.output, "out\n");
  EXPECT_EQ(occurrences(result.errors, "\n"), 1) << result.errors;
  EXPECT_THAT(result.errors, testing::StartsWith("nimbra run: "));
}

TEST_F(RunTest, CtrlCReachesTheCommandOnce) {
  PtySession terminal({program(), "run", "--", "python3", "-c", countingProgram()}, environment());
  ASSERT_TRUE(terminal.waitFor("ready"));
  terminal.type("\x03");
  EXPECT_EQ(terminal.waitForEnd(), 0) << terminal.screen();
  EXPECT_THAT(terminal.screen(), HasSubstr("signals: 1"));
  EXPECT_EQ(channel("ok"), 1);
}

TEST_F(RunTest, CtrlZStopsAndForegroundGoesOn) {
  PtySession terminal({"bash", "--norc", "-c",
                       "set -m; nimbra run --session build --ttl 600 -- sh -c 'echo ready; read line; echo line $line; "
                       "exit 6'; echo stopped $?; read go; fg; echo code $?"},
                      environment());
  ASSERT_TRUE(terminal.waitFor("ready"));
  const double before = sessionOf("build")["expires"];
  terminal.type("\x1a");
  ASSERT_TRUE(terminal.waitFor("stopped 148")) << terminal.screen();  // 128 + SIGTSTP
  terminal.type("\n");
  EXPECT_TRUE(poll(patience, [&] { return sessionOf("build")["expires"] > before; })) << "renewed when it goes on";
  terminal.type("words\n");
  ASSERT_TRUE(terminal.waitFor("code 6")) << terminal.screen();
  EXPECT_THAT(terminal.screen(), HasSubstr("line words"));
  EXPECT_EQ(sessionOf("build")["busy"], 0);
}

}  // namespace
}  // namespace veloria::tests
