#include "system/CommandLineTool.h"

#include <gmock/gmock.h>

#include <fstream>
#include <set>
#include <system_error>

#include "Process.h"

namespace veloria {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

using Paths = std::vector<fs::path>;

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

std::string errorOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "no error";
}

/// Real folders below a temporary one: `home`, `usual` (where commands usually are) and some for the PATH.
class CommandLineToolTest : public testing::Test {
 protected:
  CommandLineToolTest() {
    fs::create_directories(home);
    for (const char* name : {"usual", "a", "b"}) fs::create_directory(at(name));
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

  tests::TemporaryFolder folder;
  fs::path home = at("home");
  fs::path command = at("app/nimbra");
  FakePort port;
};

TEST_F(CommandLineToolTest, AsksTheLoginShell) {
  const auto shellAsked = [this](const std::optional<std::string>& shell) {
    port.asked.clear();
    tool(shell).shellPathDirectories();
    return port.asked;
  };
  const auto question = [](const std::string& shell) {
    return ElementsAre(ElementsAre(shell, "-lc", "printf %s \"$PATH\""));
  };
  EXPECT_THAT(shellAsked("/usr/bin/fish"), question("/usr/bin/fish"));
  EXPECT_THAT(shellAsked(std::nullopt), question("/bin/zsh"));
  EXPECT_THAT(shellAsked(""), question("/bin/zsh"));
}

TEST_F(CommandLineToolTest, SplitsTheAnswerAtColonsWithoutEmptyParts) {
  const auto directories = [this](const std::string& answer) {
    port.answer = answer;
    return tool().shellPathDirectories();
  };
  EXPECT_THAT(directories("/a::/b:"), ElementsAre("/a", "/b"));
  EXPECT_THAT(directories(":::"), IsEmpty());
  EXPECT_THAT(directories(""), IsEmpty());
  EXPECT_THAT(directories("Welcome\n/a b:."), ElementsAre("Welcome\n/a b", "."));
}

TEST_F(CommandLineToolTest, FindsTheFirstRunnableCommand) {
  setPath({"a", "b"});
  EXPECT_EQ(tool().resolvedPath(), std::nullopt);
  folder.writeProgram("b/nimbra", "");
  EXPECT_EQ(tool().resolvedPath(), at("b/nimbra"));
  fs::create_symlink("nowhere", at("a/nimbra"));
  fs::create_directories(at("usual/nimbra"));
  EXPECT_EQ(tool().resolvedPath(), at("b/nimbra")) << "neither a dangling link nor a folder is runnable";
  folder.writeProgram("home/.local/bin/nimbra", "");
  EXPECT_EQ(tool().resolvedPath(), at("home/.local/bin/nimbra")) << "on the PATH or not";
  fs::remove(at("usual/nimbra"));
  folder.writeProgram("usual/nimbra", "");
  EXPECT_EQ(tool().resolvedPath(), at("usual/nimbra"));
}

TEST_F(CommandLineToolTest, ChoosesTheFirstWritableFolder) {
  folder.write("file", "");
  setPath({"none", "file", "a", "b"});
  EXPECT_EQ(tool().installDirectory(), at("a"));
  port.readOnly = {at("a")};
  EXPECT_EQ(tool().installDirectory(), at("b"));
  port.readOnly = {at("a"), at("b")};
  EXPECT_EQ(tool().installDirectory(), std::nullopt);
  EXPECT_EQ(errorOf([this] { tool().install(); }), "No directory on your PATH is writable.");
}

TEST_F(CommandLineToolTest, NeverChoosesWhatIsNoAbsoluteFolder) {
  const fs::path here = fs::current_path();
  fs::current_path(folder.path());
  const std::string hidden = at("a").string() + std::string(1, '\0') + "/b";
  port.answer = "a:./b:.:..:" + hidden + ":Welcome\n" + at("a").string();
  EXPECT_EQ(tool().installDirectory(), std::nullopt);
  folder.writeProgram("a/nimbra", "");
  EXPECT_EQ(tool().resolvedPath(), std::nullopt);
  fs::current_path(here);
}

TEST_F(CommandLineToolTest, FallsBackToTheHomesOwnFolderWhenThatIsOnThePath) {
  port.readOnly = {at("a")};
  const std::string local = at("home/.local/bin").string();
  for (const std::string& spelling : {local, local + "/", at("home//.local/./bin").string()}) {
    port.answer = at("a").string() + ":" + spelling;
    EXPECT_EQ(tool().installDirectory(), local) << spelling;
  }
  EXPECT_EQ(tool().install(), local + "/nimbra") << "the folder is made";
  EXPECT_EQ(fs::read_symlink(local + "/nimbra"), command);
  home.clear();
  fs::remove_all(local);
  EXPECT_EQ(tool().installDirectory(), std::nullopt) << "nobody's home";
}

TEST_F(CommandLineToolTest, InstallsAndUninstalls) {
  setPath({"a"});
  EXPECT_FALSE(tool().installedHere());
  EXPECT_EQ(tool().install(), at("a/nimbra"));
  EXPECT_TRUE(tool().installedHere());
  EXPECT_EQ(tool().resolvedPath(), at("a/nimbra"));
  EXPECT_EQ(tool().install(), at("a/nimbra")) << "again";
  tool().uninstall();
  EXPECT_FALSE(fs::exists(fs::symlink_status(at("a/nimbra"))));
  EXPECT_TRUE(fs::exists(command));
  EXPECT_EQ(errorOf([this] { tool().uninstall(); }), "No link to this nimbra was found.");
}

TEST_F(CommandLineToolTest, ReplacesOnlyALink) {
  setPath({"a"});
  const fs::path link = at("a/nimbra");
  folder.writeProgram("other/nimbra", "other");
  for (const char* target : {"../other/nimbra", "nowhere", "nimbra"}) {
    fs::create_symlink(target, link);
    EXPECT_FALSE(tool().installedHere()) << target;
    EXPECT_EQ(errorOf([this] { tool().uninstall(); }), "No link to this nimbra was found.") << target;
    tool().install();
    EXPECT_EQ(fs::read_symlink(link), command) << target;
    fs::remove(link);
  }
  EXPECT_TRUE(fs::exists(at("other/nimbra")));

  folder.writeProgram("a/nimbra", "somebody's own");
  EXPECT_THAT(errorOf([this] { tool().install(); }),
              StartsWith(link.string() + " is not a link and was left as it is"));
  EXPECT_FALSE(tool().installedHere());
  EXPECT_NE(errorOf([this] { tool().uninstall(); }), "no error");
  std::ifstream kept(link);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), "somebody's own");
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
  EXPECT_EQ(errorOf([this] { tool().install(); }), text);
  fs::remove(command);
  EXPECT_THROW(tool().install(), InstallError);
  EXPECT_EQ(fs::read_symlink(link), at("other/nimbra")) << "a link that works is kept";

  fs::remove(link);
  fs::create_symlink(command, link);
  EXPECT_TRUE(tool().installedHere());
  tool().uninstall();
  EXPECT_FALSE(fs::is_symlink(link)) << "one left from before is removed";
}

TEST_F(CommandLineToolTest, LeavesItsOwnFileAloneWhenThatIsOnThePath) {
  fs::create_symlink(at("app"), at("alias"));
  for (const char* name : {"app", "alias"}) {
    setPath({name});
    EXPECT_EQ(tool().install(), at(name) / "nimbra");
    const auto state = tool().look();
    EXPECT_TRUE(state.ownFileOnPath);
    EXPECT_FALSE(state.installedHere);
    EXPECT_NE(errorOf([this] { tool().uninstall(); }), "no error");
  }
  fs::rename(command, at("elsewhere"));
  fs::create_symlink(at("elsewhere"), command);  // a package may keep the program anywhere
  EXPECT_FALSE(tool().installedHere());
  tool().install();
  EXPECT_EQ(fs::read_symlink(command), at("elsewhere"));
}

TEST_F(CommandLineToolTest, LooksWithOneQuestion) {
  setPath({"a"});
  fs::create_symlink(command, at("a/nimbra"));
  EXPECT_EQ(tool().look(), (CommandLineToolState{.resolvedPath = at("a/nimbra"),
                                                 .installDirectory = at("a"),
                                                 .installedHere = true,
                                                 .ownFileOnPath = false,
                                                 .manualCommand = tool().manualCommand()}));
  EXPECT_EQ(port.asked.size(), 1U);
  port.answer.clear();
  CommandLineToolState nothing;
  nothing.manualCommand = tool().manualCommand();
  EXPECT_EQ(tool().look(), nothing);
}

TEST_F(CommandLineToolTest, TheManualCommandMakesTheLinkInARealShell) {
  folder.writeProgram("fake/sudo", "#!/bin/sh\nprintf '%s|' \"$@\" >\"$RECORD\"\n\"$1\" \"$2\" \"$3\" \"$LINK\"\n");
  const std::string link = at("made").string();
  for (const char* name : {"plain", "it's", "''", "a b", "$HOME `id` \"x\" \\", "two\nlines", "*"}) {
    command = folder.writeProgram(std::string(name) + "/nimbra", "#!/bin/sh\n");
    const std::string text = tool().manualCommand();
    EXPECT_THAT(text, StartsWith("sudo ln "));
    EXPECT_THAT(text, testing::EndsWith("' /usr/local/bin/nimbra"));
    for (const char* shell : {"/bin/sh", "/bin/bash", "/bin/zsh"}) {
      const std::string record = at("record").string();
      const auto result =
          tests::runProcess(shell, {"-c", text}, "",
                            {"PATH=" + at("fake").string() + ":/usr/bin:/bin", "RECORD=" + record, "LINK=" + link});
      EXPECT_EQ(result.exitCode, 0) << shell << ": " << result.errors;
      std::ifstream file(record);
      EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}),
                "ln|-sf|" + command.string() + "|/usr/local/bin/nimbra|");
      EXPECT_EQ(fs::read_symlink(link), command);
      fs::remove(link);
      fs::remove(record);
    }
  }
}

}  // namespace
}  // namespace veloria
