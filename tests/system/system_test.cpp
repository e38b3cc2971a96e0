#include <gmock/gmock.h>

#include <limits>
#include <set>
#include <system_error>

#include "../support/ManualTimers.h"
#include "Process.h"
#include "SystemFakes.h"
#include "system/CommandLineTool.h"
#include "system/SystemState.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::StartsWith;

class FakePort final : public CommandLinePort {
 public:
  std::string output(const std::vector<std::string>& argv) override {
    asked = argv;
    return answer;
  }
  bool isWritableFolder(const fs::path& folder) override {
    return fs::is_directory(folder) && !readOnly.contains(folder);
  }
  bool isRunnable(const fs::path& file) override {
    std::error_code error;
    const auto status = fs::status(file, error);
    return fs::is_regular_file(status) && (status.permissions() & fs::perms::owner_exec) != fs::perms::none;
  }

  std::string answer;
  std::set<fs::path> readOnly;
  std::vector<std::string> asked;
};

/// Real folders below a temporary one: `home`, `usual` (where commands usually are) and some for the PATH.
class CommandLineToolTest : public testing::Test {
 protected:
  CommandLineToolTest() {
    for (const char* name : {"home", "usual", "a", "b"}) fs::create_directory(at(name));
    folder.writeProgram("app/nimbra", "#!/bin/sh\n");
  }

  fs::path at(const std::string& name) const { return folder.file(name); }

  CommandLineTool tool(const std::optional<std::string>& shell = "/bin/sh") {
    return {port,
            [shell](std::string_view name) { return name == "SHELL" ? shell : std::nullopt; },
            {.command = command, .home = home, .usual = {at("usual")}}};
  }
  void setPath(const std::vector<std::string>& names) {
    port.answer.clear();
    for (const auto& name : names) port.answer += (port.answer.empty() ? "" : ":") + at(name).string();
  }
  std::string installError() {
    try {
      return tool().install();
    } catch (const std::exception& error) {
      return error.what();
    }
  }

  TemporaryFolder folder;
  fs::path home = at("home");
  fs::path command = at("app/nimbra");
  FakePort port;
};

TEST_F(CommandLineToolTest, AsksTheLoginShellAndSplitsTheAnswerWithoutEmptyParts) {
  port.answer = "/a::Welcome\n/a b:.:";
  const std::pair<std::optional<std::string>, const char*> shells[] = {
      {"/usr/bin/fish", "/usr/bin/fish"}, {std::nullopt, "/bin/zsh"}, {"", "/bin/zsh"}};
  for (const auto& [variable, shell] : shells) {
    EXPECT_THAT(tool(variable).shellPathDirectories(), ElementsAre("/a", "Welcome\n/a b", "."));
    EXPECT_THAT(port.asked, ElementsAre(shell, "-lc", "printf %s \"$PATH\""));
  }
}

TEST_F(CommandLineToolTest, ChoosesTheFirstWritableAbsoluteFolder) {
  folder.write("file", "");
  setPath({"none", "file", "a", "b"});
  EXPECT_EQ(tool().installDirectory(), at("a"));
  port.readOnly = {at("a")};
  EXPECT_EQ(tool().installDirectory(), at("b"));
  port.readOnly = {at("a"), at("b")};
  EXPECT_EQ(installError(), "No directory on your PATH is writable.");
  port.readOnly.clear();
  port.answer = ".:" + at("a").string() + std::string(1, '\0') + "/b:Welcome\n" + at("a").string();
  EXPECT_EQ(tool().installDirectory(), std::nullopt);
}

TEST_F(CommandLineToolTest, FallsBackToTheHomesOwnFolderIfThatIsOnThePath) {
  port.readOnly = {at("a")};
  const std::string local = at("home/.local/bin").string();
  for (const std::string& spelling : {local, at("home//.local/./bin/").string()}) {
    port.answer = at("a").string() + ":" + spelling;
    EXPECT_EQ(tool().installDirectory(), local) << spelling;
  }
  EXPECT_EQ(tool().install(), local + "/nimbra") << "makes the folder";
  EXPECT_EQ(fs::read_symlink(local + "/nimbra"), command);
}

TEST_F(CommandLineToolTest, InstallsAndUninstalls) {
  setPath({"a"});
  EXPECT_EQ(tool().look(), (CommandLineToolState{{}, at("a"), false, false, tool().manualCommand()}));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(tool().install(), at("a/nimbra"));
  EXPECT_EQ(tool().look(), (CommandLineToolState{at("a/nimbra"), at("a"), true, false, tool().manualCommand()}));
  tool().uninstall();
  EXPECT_FALSE(fs::exists(fs::symlink_status(at("a/nimbra"))));
  EXPECT_TRUE(fs::exists(command));
}

TEST_F(CommandLineToolTest, ReplacesOnlyALink) {
  setPath({"a"});
  const fs::path link = at("a/nimbra");
  folder.writeProgram("other/nimbra", "other");
  for (const char* target : {"../other/nimbra", "nowhere", "nimbra"}) {
    fs::create_symlink(target, link);
    EXPECT_FALSE(tool().installedHere()) << target;
    tool().install();
    EXPECT_EQ(fs::read_symlink(link), command) << target;
    fs::remove(link);
  }
  folder.writeProgram("a/nimbra", "somebody's own");
  EXPECT_THAT(installError(), StartsWith(link.string() + " is not a link and was left as it is"));
  EXPECT_THROW(tool().uninstall(), std::runtime_error);
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(link)));
}

TEST_F(CommandLineToolTest, RecognisesItsOwnHoweverTheLinkIsWritten) {
  setPath({"a"});
  fs::create_symlink(at("app"), at("appLink"));
  fs::create_symlink(command, at("middle"));
  for (const std::string& target : {std::string("../app/nimbra"), at("b/../app/./nimbra").string(),
                                    at("appLink/nimbra").string(), std::string("../middle")}) {
    fs::create_symlink(target, at("a/nimbra"));
    tool().uninstall();
    EXPECT_FALSE(tool().installedHere()) << target;
  }
  fs::create_symlink(command, at("usual/nimbra"));
  EXPECT_TRUE(tool().installedHere()) << "made by hand, where the user may not write";
}

TEST_F(CommandLineToolTest, ALinkThatWouldLeadNowhereIsNotMade) {
  setPath({"a"});
  const fs::path link = at("a/nimbra");
  folder.writeProgram("other/nimbra", "");
  fs::create_symlink(at("other/nimbra"), link);
  fs::remove(command);
  EXPECT_THROW(tool().install(), InstallError);
  EXPECT_EQ(fs::read_symlink(link), at("other/nimbra")) << "a link that works is kept";
}

TEST_F(CommandLineToolTest, LeavesItsOwnFileAloneIfThatIsOnThePath) {
  fs::create_symlink(at("app"), at("alias"));
  for (const char* name : {"app", "alias"}) {
    setPath({name});
    EXPECT_EQ(tool().install(), at(name) / "nimbra");
    EXPECT_TRUE(tool().look().ownFileOnPath);
    EXPECT_THROW(tool().uninstall(), std::runtime_error);
  }
  fs::rename(command, at("elsewhere"));
  fs::create_symlink(at("elsewhere"), command);  // a package may keep the program anywhere
  EXPECT_THROW(tool().uninstall(), std::runtime_error);
  tool().install();
  EXPECT_EQ(fs::read_symlink(command), at("elsewhere"));
}

TEST_F(CommandLineToolTest, TheManualCommandMakesTheLinkInARealShell) {
  folder.writeProgram("fake/sudo", "#!/bin/sh\ntest \"$4\" = /usr/local/bin/nimbra && \"$1\" \"$2\" \"$3\" made\n");
  for (const char* name : {"it's ''", "$HOME `id` \"x\" \\ *", "two\nlines"}) {
    command = folder.writeProgram(std::string(name) + "/nimbra", "#!/bin/sh\n");
    for (const char* shell : {"/bin/sh", "/bin/zsh"}) {
      const std::string inFolder = "cd " + folder.path() + "; " + tool().manualCommand();
      const auto result = runProcess(shell, {"-c", inFolder}, "", {"PATH=" + at("fake").string() + ":/usr/bin:/bin"});
      EXPECT_EQ(result.exitCode, 0) << shell << ": " << result.errors;
      EXPECT_EQ(fs::read_symlink(at("made")), command);
      fs::remove(at("made"));
    }
  }
}

TEST(SystemState, TellsOfEachChangeOnceAndPollsOnlyBetweenStartAndStop) {
  FakeSystem system;
  ManualTimers timers;
  system.now = {.reduceTransparency = true, .glassTint = 0.25};
  std::optional<SystemState> state(std::in_place, system, timers);
  std::vector<SystemFacts> told;
  const auto subscription = state->facts().subscribe([&](const SystemFacts& facts) { told.push_back(facts); });
  const SystemFacts first = system.now;
  system.now.increaseContrast = true;
  system.changed();
  system.changed();
  EXPECT_THAT(told, ElementsAre(first, system.now));
  EXPECT_TRUE(timers.entries.empty());

  system.now.glassTint = 0.5;
  state->start();
  EXPECT_EQ(state->facts().get().glassTint, 0.5) << "asked at the start";
  EXPECT_EQ(timers.entries.size(), 1U);
  system.now.glassTint = std::numeric_limits<double>::infinity();
  timers.fire();
  EXPECT_EQ(state->facts().get().glassTint, 0) << "not finite is none";
  state->stop();
  EXPECT_TRUE(timers.entries.empty());

  state.reset();
  EXPECT_FALSE(system.changed);
}

}  // namespace
}  // namespace veloria::tests
