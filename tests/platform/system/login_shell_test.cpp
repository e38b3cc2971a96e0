#include <gmock/gmock.h>

#include <filesystem>

#include "Process.h"
#include "platform/posix/process/PosixCommandLine.h"
#include "system/CommandLineTool.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using testing::Contains;

TEST(LoginShell, HasThePathOfTheUsersProfileAndBlocksNothing) {
  const TemporaryFolder folder;
  const EnvironmentChange home{"HOME", folder.path()}, zdotdir{"ZDOTDIR", {}}, config{"XDG_CONFIG_HOME", {}};
  const auto directories = [&](const std::string& shell, double seconds = 60) {
    PosixCommandLine port(seconds);
    const auto environment = [&](std::string_view name) {
      return name == "SHELL" ? std::optional(shell) : std::nullopt;
    };
    return CommandLineTool(port, environment, {.command = {}, .home = folder.path(), .usual = {}})
        .shellPathDirectories();
  };
  fs::create_directories(folder.file(".config/fish"));
  for (const auto& [shell, profile, text] : {
           std::tuple{"/bin/sh", ".profile", "PATH=$HOME/bin:$PATH"},
           {"/bin/bash", ".bash_profile", "read name; export PATH=$HOME/bin:$PATH"},
           {"/bin/zsh", ".zprofile", "path=($HOME/bin $path)"},
           {"/usr/bin/fish", ".config/fish/config.fish", "mkdir -p ~/bin; set -gx PATH $HOME/bin $PATH"},
       }) {
    ASSERT_TRUE(fs::exists(shell)) << shell << " is not installed (script/bootstrap installs it)";
    EXPECT_THAT(directories(shell), testing::Not(Contains(folder.file("bin")))) << shell;
    folder.write(profile, std::string(text) + "\n");
    EXPECT_THAT(directories(shell), Contains(folder.file("bin"))) << shell;
    fs::remove(folder.file(profile));
  }
  for (const char* shell : {"/no/such/shell", "/bin/false"}) EXPECT_TRUE(directories(shell).empty()) << shell;
  folder.write(".profile", "trap '' TERM HUP INT; sleep 1000\n");
  EXPECT_TRUE(directories("/bin/sh", 0.2).empty());
}

TEST(CommandBeside, IsBesideTheProgramOrInTheFolderForCommands) {
  const TemporaryFolder folder;
  const fs::path program = folder.writeProgram("lib/veloria", "");
  EXPECT_EQ(commandBeside(program), folder.file("lib/nimbra")) << "the expected place";
  const std::string inBin = folder.writeProgram("bin/nimbra", "");
  EXPECT_EQ(commandBeside(program), inBin);
  const std::string beside = folder.writeProgram("lib/nimbra", "");
  EXPECT_EQ(commandBeside(program), beside);
}

}  // namespace
}  // namespace veloria::tests
