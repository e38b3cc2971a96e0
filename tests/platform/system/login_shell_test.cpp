#include <gmock/gmock.h>

#include <filesystem>

#include "Process.h"
#include "platform/posix/process/PosixCommandLine.h"
#include "system/CommandLineTool.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using Folders = std::vector<fs::path>;

/// With a home of its own, whose profile files the shells read.
class LoginShellTest : public testing::Test {
 protected:
  Folders directories(const std::optional<std::string>& shell, double seconds = 60) {
    PosixCommandLine port(seconds);
    const auto environment = [&](std::string_view name) { return name == "SHELL" ? shell : std::nullopt; };
    return CommandLineTool(port, environment, {.command = {}, .home = folder.path(), .usual = {}})
        .shellPathDirectories();
  }

  TemporaryFolder folder;
  EnvironmentChange home{"HOME", folder.path()};
  EnvironmentChange zdotdir{"ZDOTDIR", std::nullopt};
  EnvironmentChange config{"XDG_CONFIG_HOME", std::nullopt};
};

TEST_F(LoginShellTest, HasThePathOfTheUsersProfile) {
  fs::create_directories(folder.file(".config/fish"));
  for (const auto& [shell, profile, text] : {
           std::tuple{"/bin/sh", ".profile", "PATH=$HOME/bin:$PATH"},
           {"/bin/bash", ".bash_profile", "export PATH=$HOME/bin:$PATH"},
           {"/bin/zsh", ".zprofile", "path=($HOME/bin $path)"},
           {"/usr/bin/fish", ".config/fish/config.fish", "mkdir -p ~/bin; set -gx PATH $HOME/bin $PATH"},
       }) {
    ASSERT_TRUE(fs::exists(shell)) << shell << " is not installed (script/bootstrap installs it)";
    EXPECT_THAT(directories(shell), Not(Contains(folder.file("bin")))) << shell;
    folder.write(profile, std::string(text) + "\n");
    EXPECT_THAT(directories(shell), testing::IsSupersetOf(Folders{folder.file("bin"), "/usr/bin"})) << shell;
    fs::remove(folder.file(profile));
  }
  folder.write(".zprofile", "path=(/only/in/zsh $path)\n");
  EXPECT_THAT(directories(std::nullopt), Contains(fs::path("/only/in/zsh"))) << "if no shell is named";
}

TEST_F(LoginShellTest, ThatMisbehavesBlocksNothing) {
  for (const char* shell : {"/no/such/shell", "/bin/false"}) EXPECT_THAT(directories(shell), IsEmpty()) << shell;
  folder.write(".bash_profile", "read -p 'Your name? ' name </dev/tty; read name; PATH=/after\n");
  EXPECT_THAT(directories("/bin/bash"), ElementsAre("/after"));
  folder.write(".profile", "trap '' TERM HUP INT; sleep 1000\n");
  EXPECT_THAT(directories("/bin/sh", 0.2), IsEmpty());
  folder.write(".profile", "yes\n");
  EXPECT_THAT(directories("/bin/sh"), IsEmpty());
}

TEST_F(LoginShellTest, TheCommandIsBesideTheProgramOrInTheFolderForCommands) {
  const fs::path program = folder.writeProgram("lib/veloria", "");
  EXPECT_EQ(commandBeside(program), folder.file("lib/nimbra")) << "the expected place";
  const std::string inBin = folder.writeProgram("bin/nimbra", "");
  EXPECT_EQ(commandBeside(program), inBin);
  EXPECT_EQ(commandBeside(folder.file("bin/veloria")), inBin);
  const std::string beside = folder.writeProgram("lib/nimbra", "");
  EXPECT_EQ(commandBeside(program), beside);
}

}  // namespace
}  // namespace veloria::tests
