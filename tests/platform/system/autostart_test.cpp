#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "Process.h"
#include "platform/linux/system/AutostartLoginItem.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;

class AutostartTest : public testing::Test {
 protected:
  AutostartLoginItem itemFor(const fs::path& program) {
    return {[this](std::string_view name) {
              return name == "XDG_CONFIG_HOME" ? std::optional(folder.file("config")) : std::nullopt;
            },
            program};
  }

  TemporaryFolder folder;
  fs::path file = folder.file("config/autostart/veloria.desktop");
  AutostartLoginItem item = itemFor("/opt/veloria");
};

TEST_F(AutostartTest, TheEntryIsValidAndStartsTheProgramWhateverItsPath) {
  for (const std::string name : {"a b", "100% %f %%", "it's", "\"quoted\"", "back\\slash\\\\", "$HOME", "`id`", "a=b;c",
                                 "tab\tand\nline", "*?~#&|<>()", "Grüße 光", "\\n"}) {
    const std::string program = folder.writeProgram(name + "/veloria", "#!/bin/sh\n: >\"$0.\"$#\n");
    ASSERT_TRUE(itemFor(program).add()) << name;
    EXPECT_TRUE(item.isRegistered()) << name;
    const auto valid = runProcess("/usr/bin/desktop-file-validate", {file.string()});
    EXPECT_EQ(valid.exitCode, 0) << name << ": " << valid.output << valid.errors;
    const auto launched = runProcess("/usr/bin/gio", {"launch", file.string()});
    ASSERT_EQ(launched.exitCode, 0) << name << ": " << launched.output << launched.errors;
    EXPECT_TRUE(poll(20, [&] { return fs::exists(program + ".0"); })) << name;
  }
}

TEST_F(AutostartTest, RemovesOnlyAnEntryThatIsOn) {
  ASSERT_TRUE(item.add());
  ASSERT_TRUE(item.remove());
  EXPECT_FALSE(item.isRegistered() || fs::exists(file));
  ASSERT_TRUE(item.add());
  std::ofstream(file, std::ios::app) << "Hidden=true\n";
  EXPECT_FALSE(item.isRegistered());
  ASSERT_TRUE(item.remove());
  EXPECT_TRUE(fs::exists(file)) << "the user's own choice";
  ASSERT_TRUE(item.add());
  EXPECT_TRUE(item.isRegistered());
}

TEST_F(AutostartTest, ReadsEntriesAsDesktopsDo) {
  const std::string head = "[Desktop Entry]\nType=Application\n";
  const std::vector<std::pair<std::string, bool>> cases{
      {head + "Exec=veloria\n", true},
      {"# a comment\n\n" + head + "Exec=veloria", true},
      {head + "Exec=veloria\nHidden=true\n", false},
      {head + "Exec=veloria\n Hidden = 1 \n", false},
      {head + "Exec=veloria\nX-GNOME-Autostart-enabled=false\n", false},
      {head + "Exec=veloria\n[Desktop Action x]\nHidden=true\n", true},
      {"[Other]\nExec=veloria\n", false},
      {head, false},
      {std::string("\0\xFF=[", 4), false},
  };
  for (const auto& [text, starts] : cases) EXPECT_EQ(startsAtLogin(text), starts) << text;
}

TEST_F(AutostartTest, HostileFilesAreOffAndStay) {
  for (const char* program : {"relative/veloria", "/not/utf-8/\xFF"}) EXPECT_FALSE(itemFor(program).add());
  ASSERT_TRUE(item.add());
  std::ofstream(file, std::ios::app) << std::string(100000, '#');
  EXPECT_FALSE(item.isRegistered()) << "larger than any entry";
  fs::remove(file);
  fs::create_symlink("/dev/null", file);
  EXPECT_FALSE(item.isRegistered()) << "masked";
  EXPECT_FALSE(item.add());
  EXPECT_TRUE(fs::is_symlink(file));
}

}  // namespace
}  // namespace veloria::tests
