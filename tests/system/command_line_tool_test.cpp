#include "system/CommandLineTool.h"

#include <gmock/gmock.h>

#include <fstream>
#include <set>
#include <system_error>

#include "Process.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class FakePort final : public CommandLinePort {
 public:
  std::string output(const std::vector<std::string>& argv) override {
    asked.push_back(argv);
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
  std::vector<std::vector<std::string>> asked;
};

std::string contentsOf(const fs::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

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
  std::string errorOf(void (*action)(CommandLineTool)) {
    try {
      action(tool());
    } catch (const std::exception& error) {
      return error.what();
    }
    return "no error";
  }
  std::string installError() {
    return errorOf([](CommandLineTool tool) { tool.install(); });
  }
  std::string uninstallError() {
    return errorOf([](CommandLineTool tool) { tool.uninstall(); });
  }

  static constexpr const char* noLink = "No link to this nimbra was found.";
  TemporaryFolder folder;
  fs::path home = at("home");
  fs::path command = at("app/nimbra");
  FakePort port;
};

TEST_F(CommandLineToolTest, AsksTheLoginShellAndSplitsTheAnswerWithoutEmptyParts) {
  const std::pair<std::optional<std::string>, const char*> shells[] = {
      {"/usr/bin/fish", "/usr/bin/fish"}, {std::nullopt, "/bin/zsh"}, {"", "/bin/zsh"}};
  for (const auto& [variable, shell] : shells) {
    port.asked.clear();
    tool(variable).shellPathDirectories();
    EXPECT_THAT(port.asked, ElementsAre(ElementsAre(shell, "-lc", "printf %s \"$PATH\"")));
  }
  port.answer = "/a::Welcome\n/a b:.:";
  EXPECT_THAT(tool().shellPathDirectories(), ElementsAre("/a", "Welcome\n/a b", "."));
  port.answer = "";
  EXPECT_THAT(tool().shellPathDirectories(), IsEmpty());
}

TEST_F(CommandLineToolTest, FindsTheFirstRunnableCommand) {
  setPath({"a", "b"});
  EXPECT_EQ(tool().resolvedPath(), std::nullopt);
  fs::create_symlink("nowhere", at("a/nimbra"));
  fs::create_directories(at("usual/nimbra"));
  const char* nearer[] = {"b/nimbra", "home/.local/bin/nimbra", "usual/nimbra"};  // on the PATH or not
  for (const char* name : nearer) {
    if (name == nearer[2]) fs::remove(at(name));
    folder.writeProgram(name, "");
    EXPECT_EQ(tool().resolvedPath(), at(name)) << "a dangling link or a folder can't be run";
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
  const fs::path here = fs::current_path();
  fs::current_path(folder.path());
  port.readOnly.clear();
  port.answer = "a:./b:.:" + at("a").string() + std::string(1, '\0') + "/b:Welcome\n" + at("a").string();
  EXPECT_EQ(tool().installDirectory(), std::nullopt);
  folder.writeProgram("a/nimbra", "");
  EXPECT_EQ(tool().resolvedPath(), std::nullopt);
  fs::current_path(here);
}

TEST_F(CommandLineToolTest, FallsBackToTheHomesOwnFolderIfThatIsOnThePath) {
  port.readOnly = {at("a")};
  const std::string local = at("home/.local/bin").string();
  for (const std::string& spelling : {local, local + "/", at("home//.local/./bin").string()}) {
    port.answer = at("a").string() + ":" + spelling;
    EXPECT_EQ(tool().installDirectory(), local) << spelling;
  }
  EXPECT_EQ(tool().install(), local + "/nimbra") << "makes the folder";
  EXPECT_EQ(fs::read_symlink(local + "/nimbra"), command);
  home.clear();
  fs::remove_all(local);
  EXPECT_EQ(tool().installDirectory(), std::nullopt) << "no home is known";
}

TEST_F(CommandLineToolTest, InstallsAndUninstalls) {
  setPath({"a"});
  EXPECT_FALSE(tool().installedHere());
  for (int i = 0; i < 2; ++i) EXPECT_EQ(tool().install(), at("a/nimbra"));
  port.asked.clear();
  EXPECT_EQ(tool().look(), (CommandLineToolState{.resolvedPath = at("a/nimbra"),
                                                 .installDirectory = at("a"),
                                                 .installedHere = true,
                                                 .ownFileOnPath = false,
                                                 .manualCommand = tool().manualCommand()}));
  EXPECT_EQ(port.asked.size(), 1U) << "one question for all of it";
  tool().uninstall();
  EXPECT_FALSE(fs::exists(fs::symlink_status(at("a/nimbra"))));
  EXPECT_TRUE(fs::exists(command));
  EXPECT_EQ(uninstallError(), noLink);
  port.answer.clear();
  CommandLineToolState nothing;
  nothing.manualCommand = tool().manualCommand();
  EXPECT_EQ(tool().look(), nothing);
}

TEST_F(CommandLineToolTest, ReplacesOnlyALink) {
  setPath({"a"});
  const fs::path link = at("a/nimbra");
  folder.writeProgram("other/nimbra", "other");
  for (const char* target : {"../other/nimbra", "nowhere", "nimbra"}) {
    fs::create_symlink(target, link);
    EXPECT_FALSE(tool().installedHere()) << target;
    EXPECT_EQ(uninstallError(), noLink) << target;
    tool().install();
    EXPECT_EQ(fs::read_symlink(link), command) << target;
    fs::remove(link);
  }
  folder.writeProgram("a/nimbra", "somebody's own");
  EXPECT_THAT(installError(), StartsWith(link.string() + " is not a link and was left as it is"));
  EXPECT_FALSE(tool().installedHere());
  EXPECT_EQ(uninstallError(), noLink);
  EXPECT_EQ(contentsOf(link), "somebody's own");
  fs::remove(link);
  fs::create_directories(link / "folder");
  EXPECT_THROW(tool().install(), std::system_error);
  EXPECT_TRUE(fs::exists(link / "folder"));
}

TEST_F(CommandLineToolTest, RecognisesItsOwnHoweverTheLinkIsWritten) {
  setPath({"a"});
  fs::create_symlink(at("app"), at("appLink"));
  fs::create_symlink(command, at("middle"));
  for (const std::string& target : {std::string("../app/nimbra"), at("b/../app/./nimbra").string(),
                                    at("appLink/nimbra").string(), std::string("../middle")}) {
    fs::create_symlink(target, at("a/nimbra"));
    EXPECT_TRUE(tool().installedHere()) << target;
    tool().uninstall();
    EXPECT_FALSE(tool().installedHere()) << target;
  }
  fs::create_symlink(command, at("usual/nimbra"));
  EXPECT_TRUE(tool().installedHere()) << "made by hand, where the user may not write";
}

TEST_F(CommandLineToolTest, ALinkThatWouldLeadNowhereIsNotMade) {
  setPath({"a"});
  const fs::path link = at("a/nimbra");
  const std::string text = "The link " + link.string() + " does not resolve to a runnable file.";
  folder.writeProgram("other/nimbra", "");
  fs::create_symlink(at("other/nimbra"), link);
  fs::permissions(command, fs::perms::owner_read);
  EXPECT_EQ(installError(), text);
  fs::remove(command);
  EXPECT_THROW(tool().install(), InstallError);
  EXPECT_EQ(fs::read_symlink(link), at("other/nimbra")) << "a link that works is kept";

  fs::remove(link);
  fs::create_symlink(command, link);
  EXPECT_TRUE(tool().installedHere());
  tool().uninstall();
  EXPECT_FALSE(fs::is_symlink(link)) << "one left from before is removed";
}

TEST_F(CommandLineToolTest, LeavesItsOwnFileAloneIfThatIsOnThePath) {
  fs::create_symlink(at("app"), at("alias"));
  for (const char* name : {"app", "alias"}) {
    setPath({name});
    EXPECT_EQ(tool().install(), at(name) / "nimbra");
    const auto state = tool().look();
    EXPECT_TRUE(state.ownFileOnPath);
    EXPECT_FALSE(state.installedHere);
    EXPECT_EQ(uninstallError(), noLink);
  }
  fs::rename(command, at("elsewhere"));
  fs::create_symlink(at("elsewhere"), command);  // a package may keep the program anywhere
  EXPECT_FALSE(tool().installedHere());
  tool().install();
  EXPECT_EQ(fs::read_symlink(command), at("elsewhere"));
}

TEST_F(CommandLineToolTest, TheManualCommandMakesTheLinkInARealShell) {
  folder.writeProgram("fake/sudo", "#!/bin/sh\nprintf '%s|' \"$@\" >\"$RECORD\"\n\"$1\" \"$2\" \"$3\" \"$LINK\"\n");
  const fs::path link = at("made");
  for (const char* name : {"it's ''", "$HOME `id` \"x\" \\ *", "two\nlines"}) {
    command = folder.writeProgram(std::string(name) + "/nimbra", "#!/bin/sh\n");
    for (const char* shell : {"/bin/sh", "/bin/zsh"}) {
      const auto result = runProcess(shell, {"-c", tool().manualCommand()}, "",
                                     {"PATH=" + at("fake").string() + ":/usr/bin:/bin",
                                      "RECORD=" + at("record").string(), "LINK=" + link.string()});
      EXPECT_EQ(result.exitCode, 0) << shell << ": " << result.errors;
      EXPECT_EQ(contentsOf(at("record")), "ln|-sf|" + command.string() + "|/usr/local/bin/nimbra|");
      EXPECT_EQ(fs::read_symlink(link), command);
      fs::remove(link);
    }
  }
}

}  // namespace
}  // namespace veloria::tests
