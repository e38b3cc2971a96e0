#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "Process.h"
#include "base/MediaClock.h"
#include "platform/linux/system/AutostartEntry.h"
#include "platform/linux/system/AutostartLoginItem.h"

namespace veloria {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr double bound = 20;

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

const std::vector<std::string> awkwardNames{"plain",           "a b",      "100% %f %%", "it's",  "\"quoted\"",
                                            "back\\slash\\\\", "$HOME",    "`id`",       "a=b;c", "tab\tand\nline",
                                            "*?~#&|<>()",      "Grüße 光", "\\n"};

class AutostartTest : public testing::Test {
 protected:
  AutostartLoginItem itemFor(const fs::path& program) { return {environment(), program}; }

  Environment environment() const {
    return [this](std::string_view name) -> std::optional<std::string> {
      if (name == "XDG_CONFIG_HOME") return folder.file("config");
      return std::nullopt;
    };
  }

  void put(const std::string& text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
  }

  tests::TemporaryFolder folder;
  fs::path file = folder.file("config/autostart/veloria.desktop");
  AutostartLoginItem item{environment(), "/opt/veloria"};
};

TEST_F(AutostartTest, TheEntryIsValidAndStartsTheProgramWhateverItsPath) {
  for (const auto& name : awkwardNames) {
    const std::string program = folder.writeProgram(name + "/veloria", "#!/bin/sh\n: >\"$0.\"$#\n");
    ASSERT_TRUE(itemFor(program).add()) << name;
    EXPECT_TRUE(item.isRegistered()) << name;
    const auto valid = tests::runProcess("/usr/bin/desktop-file-validate", {file.string()});
    EXPECT_EQ(valid.exitCode, 0) << name << ": " << valid.output << valid.errors;
    const auto launched = tests::runProcess("/usr/bin/gio", {"launch", file.string()});
    ASSERT_EQ(launched.exitCode, 0) << name << ": " << launched.output << launched.errors;
    const double deadline = mediaTime() + bound;
    while (!fs::exists(program + ".0") && mediaTime() < deadline) std::this_thread::yield();
    EXPECT_TRUE(fs::exists(program + ".0")) << name << " is started, without arguments:\n" << contentOf(file);
  }
}

TEST_F(AutostartTest, AnEntryIsRemovedAndNothingElse) {
  ASSERT_TRUE(item.add());
  std::ofstream(file.parent_path() / "other.desktop") << "x";
  ASSERT_TRUE(item.remove());
  EXPECT_FALSE(item.isRegistered());
  EXPECT_FALSE(fs::exists(file));
  EXPECT_TRUE(fs::exists(file.parent_path() / "other.desktop"));
  EXPECT_TRUE(item.remove()) << "again";
}

TEST_F(AutostartTest, AnEntryThatADesktopHasHiddenIsOffUntilItIsAskedFor) {
  ASSERT_TRUE(item.add());
  put(contentOf(file) + "Hidden=true\n");
  EXPECT_FALSE(item.isRegistered());
  ASSERT_TRUE(item.remove());
  EXPECT_THAT(contentOf(file), HasSubstr("Hidden=true")) << "the user's own word";
  ASSERT_TRUE(item.add());
  EXPECT_TRUE(item.isRegistered());
}

TEST_F(AutostartTest, EntriesAreReadAsDesktopsDo) {
  const std::string head = "[Desktop Entry]\nType=Application\n";
  const std::vector<std::pair<std::string, bool>> cases{
      {head + "Exec=veloria\n", true},
      {head + "Exec = veloria\r\nHidden = false\r\n", true},
      {"# a comment\n\n" + head + "Exec=env X=1 veloria", true},
      {head + "Exec=veloria\nHidden=true\n", false},
      {head + "Exec=veloria\n Hidden = true \n", false},
      {head + "Exec=veloria\n#Hidden=true\n", true},
      {head + "Exec=veloria\nX-GNOME-Autostart-enabled=false\n", false},
      {head + "Exec=veloria\n[Desktop Action x]\nHidden=true\n", true},
      {"[Other]\nExec=veloria\n", false},
      {head + "Exec=\n", false},
      {head, false},
      {"", false},
      {std::string("\0\xFF=[", 4), false},
  };
  for (const auto& [text, starts] : cases) EXPECT_EQ(startsAtLogin(text), starts) << text;
}

TEST_F(AutostartTest, HostileFilesAreOff) {
  put("[Desktop Entry]\nExec=veloria\n" + std::string(100000, '#'));
  EXPECT_FALSE(item.isRegistered()) << "larger than any entry";
  fs::remove(file);
  fs::create_symlink("/dev/null", file);
  EXPECT_FALSE(item.isRegistered()) << "masked";
  EXPECT_FALSE(item.add());
  EXPECT_TRUE(fs::is_symlink(file));
  fs::remove(file);
  fs::create_directory(file);
  EXPECT_FALSE(item.isRegistered());
  EXPECT_THAT(item.add().error(), HasSubstr(file.string()));
}

TEST_F(AutostartTest, FailuresLeaveNothingHalfDone) {
  EXPECT_THAT(itemFor("relative/veloria").add().error(), HasSubstr("can't hold this path"));
  EXPECT_FALSE(itemFor("/not/utf-8/\xFF").add());
  EXPECT_FALSE(fs::exists(file));
  std::ofstream(folder.file("config")) << "a file";
  EXPECT_THAT(item.add().error(), HasSubstr(file.parent_path().string()));
  EXPECT_FALSE(item.isRegistered());
}

}  // namespace
}  // namespace veloria
