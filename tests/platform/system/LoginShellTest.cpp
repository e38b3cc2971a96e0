#include <gmock/gmock.h>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "Process.h"
#include "platform/posix/process/PosixCommandLine.h"
#include "system/CommandLineTool.h"

namespace veloria {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr double longTime = 60;
constexpr unsigned nobody = 65534;

/// With a home of its own, whose profile files the shells read.
class LoginShellTest : public testing::Test {
 protected:
  LoginShellTest() { fs::create_directories(folder.file("bin")); }

  void writeInHome(const std::string& name, const std::string& text) {
    fs::create_directories(fs::path(folder.file(name)).parent_path());
    folder.write(name, text);
  }

  std::vector<fs::path> directories(const std::optional<std::string>& shell, double seconds = longTime) {
    PosixCommandLine port(seconds);
    return tool(port, shell).shellPathDirectories();
  }

  CommandLineTool tool(PosixCommandLine& port, const std::optional<std::string>& shell) {
    return {port,
            [shell](std::string_view name) { return name == "SHELL" ? shell : std::nullopt; },
            {.command = folder.file("app/nimbra"), .home = folder.path(), .usual = {}}};
  }

  tests::TemporaryFolder folder;
  tests::EnvironmentChange home{"HOME", folder.path()};
  tests::EnvironmentChange zdotdir{"ZDOTDIR", std::nullopt};
  tests::EnvironmentChange config{"XDG_CONFIG_HOME", std::nullopt};
};

TEST_F(LoginShellTest, HasThePathOfTheUsersProfile) {
  struct Case {
    const char* shell;
    const char* profile;
    const char* text;
  };
  const std::vector<Case> cases{
      {"/bin/sh", ".profile", "PATH=$HOME/bin:$PATH"},
      {"/bin/dash", ".profile", "PATH=$HOME/bin:$PATH"},
      {"/bin/bash", ".bash_profile", "export PATH=$HOME/bin:$PATH"},
      {"/bin/zsh", ".zprofile", "path=($HOME/bin $path)"},
      {"/usr/bin/fish", ".config/fish/config.fish", "set -gx PATH $HOME/bin $PATH"},
  };
  for (const auto& [shell, profile, text] : cases) {
    ASSERT_TRUE(fs::exists(shell)) << shell << " is not installed (script/bootstrap installs it)";
    EXPECT_THAT(directories(shell), Not(Contains(folder.file("bin")))) << shell;
    writeInHome(profile, std::string(text) + "\n");
    const auto found = directories(shell);
    EXPECT_THAT(found, Contains(folder.file("bin"))) << shell;
    EXPECT_THAT(found, Contains(fs::path("/usr/bin"))) << shell;
    fs::remove(folder.file(profile));
  }
}

TEST_F(LoginShellTest, IsZshWhenNoneIsNamed) {
  writeInHome(".zprofile", "path=(/only/in/zsh $path)\n");
  EXPECT_THAT(directories(std::nullopt), Contains(fs::path("/only/in/zsh")));
}

TEST_F(LoginShellTest, WhichCannotBeStartedHasNoPath) {
  EXPECT_THAT(directories("/no/such/shell"), IsEmpty());
  EXPECT_THAT(directories(folder.path()), IsEmpty());
  EXPECT_THAT(directories("/bin/false"), IsEmpty());
  EXPECT_THAT(directories(folder.writeProgram("shell", "#!/no/such/interpreter\n")), IsEmpty());
}

TEST_F(LoginShellTest, ThatPrintsRubbishLeavesTheRestUsable) {
  writeInHome(".bash_profile", "echo Welcome; echo problems >&2; PATH=/first:$HOME/bin\n");
  EXPECT_THAT(directories("/bin/bash"), ElementsAre("Welcome\n/first", folder.file("bin")));
  PosixCommandLine port;
  EXPECT_EQ(tool(port, "/bin/bash").installDirectory(), folder.file("bin"));
}

TEST_F(LoginShellTest, ThatAsksSomethingGetsNoAnswer) {
  writeInHome(".bash_profile", "read -p 'Your name? ' name </dev/tty; read name; PATH=/after\n");
  EXPECT_THAT(directories("/bin/bash"), ElementsAre("/after"));
}

TEST_F(LoginShellTest, ThatFailsInTheEndStillHasAPath) {
  EXPECT_THAT(directories(folder.writeProgram("shell", "#!/bin/sh\nprintf /a:/b\nexit 3\n")), ElementsAre("/a", "/b"));
}

TEST_F(LoginShellTest, ThatHangsOrFloodsIsEnded) {
  writeInHome(".profile", "trap '' TERM HUP INT; sleep 1000\n");
  EXPECT_THAT(directories("/bin/sh", 0.2), IsEmpty());
  writeInHome(".profile", "yes\n");
  EXPECT_THAT(directories("/bin/sh"), IsEmpty());
}

/// Runs `work` as somebody who may not write everywhere, also when the tests run as root.
int asOrdinaryUser(const std::function<int()>& work) {
  if (::geteuid() != 0) return work();
  const pid_t child = ::fork();
  if (child == 0) {
    const bool dropped = ::setgroups(0, nullptr) == 0 && ::setresgid(nobody, nobody, nobody) == 0 &&
                         ::setresuid(nobody, nobody, nobody) == 0;
    ::_exit(dropped ? work() : 99);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(LoginShellTest, PassesOverFoldersThatTheUserMayNotWrite) {
  const std::vector<std::pair<const char*, unsigned>> folders{
      {"closed", 0555}, {"unsearchable", 0666}, {"open", 0777}, {"later", 0777}};
  std::string path = "/proc:/usr/bin";
  for (const auto& [name, mode] : folders) {
    fs::create_directory(folder.file(name));
    fs::permissions(folder.file(name), fs::perms(mode));
    path += ":" + folder.file(name);
  }
  const std::string shell = folder.writeProgram("shell", "#!/bin/sh\nprintf %s '" + path + "'\n");
  const std::string command = folder.writeProgram("app/nimbra", "#!/bin/sh\n");
  fs::permissions(folder.path(), fs::perms(0755));
  EXPECT_EQ(asOrdinaryUser([&] {
              PosixCommandLine port;
              CommandLineTool tool = this->tool(port, shell);
              if (tool.installDirectory() != folder.file("open")) return 1;
              if (tool.install() != folder.file("open/nimbra")) return 2;
              return tool.installedHere() ? 0 : 3;
            }),
            0);
  EXPECT_EQ(fs::read_symlink(folder.file("open/nimbra")), command);
}

TEST(CommandBesideTest, IsBesideTheProgramOrInTheFolderForCommands) {
  const tests::TemporaryFolder folder;
  const fs::path program = folder.writeProgram("lib/veloria", "");
  EXPECT_EQ(commandBeside(program), folder.file("lib/nimbra")) << "where it should be";
  const std::string inBin = folder.writeProgram("bin/nimbra", "");
  EXPECT_EQ(commandBeside(program), inBin);
  EXPECT_EQ(commandBeside(folder.file("bin/veloria")), inBin);
  EXPECT_EQ(commandBeside(program), inBin);
  const std::string beside = folder.writeProgram("lib/nimbra", "");
  EXPECT_EQ(commandBeside(program), beside);
}

}  // namespace
}  // namespace veloria
