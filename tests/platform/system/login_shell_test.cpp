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
    return tool(port, shell).shellPathDirectories();
  }

  CommandLineTool tool(PosixCommandLine& port, const std::optional<std::string>& shell) {
    return {port,
            [shell](std::string_view name) { return name == "SHELL" ? shell : std::nullopt; },
            {.command = folder.file("app/nimbra"), .home = folder.path(), .usual = {}}};
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
           {"/bin/dash", ".profile", "PATH=$HOME/bin:$PATH"},
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
  for (const std::string& shell : {std::string("/no/such/shell"), folder.path(), std::string("/bin/false"),
                                   folder.writeProgram("broken", "#!/no/such/interpreter\n")}) {
    EXPECT_THAT(directories(shell), IsEmpty()) << shell;
  }
  EXPECT_THAT(directories(folder.writeProgram("shell", "#!/bin/sh\nprintf /a:/b\nexit 3\n")), ElementsAre("/a", "/b"));
  fs::create_directory(folder.file("bin"));
  folder.write(".bash_profile", "echo Welcome; echo problems >&2; PATH=/first:/none:$HOME/bin\n");
  EXPECT_THAT(directories("/bin/bash"), ElementsAre("Welcome\n/first", "/none", folder.file("bin")));
  PosixCommandLine port;
  EXPECT_THROW(tool(port, "/bin/bash").install(), std::exception) << "there is no command yet";
  folder.writeProgram("app/nimbra", "#!/bin/sh\n");
  EXPECT_EQ(tool(port, "/bin/bash").install(), folder.file("bin/nimbra"));
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
