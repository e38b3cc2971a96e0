// The line in the user's style sheet: in and out again without another byte changed, or an error and nothing changed.

#include "platform/linux/panel/PanelText.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "PrivateBus.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;

class PanelTextTest : public testing::Test {
 protected:
  PanelTextTest() { fs::create_directories(folder.file("gtk-3.0")); }
  std::string sheet() const {
    std::ifstream file(folder.file("gtk-3.0/gtk.css"));
    return {std::istreambuf_iterator<char>(file), {}};
  }
  bool exists(const std::string& name) const { return fs::exists(fs::symlink_status(folder.file("gtk-3.0/" + name))); }

  TemporaryFolder folder;
  PanelText text{environmentOf({{"XDG_CONFIG_HOME", folder.path()}}), "mate", "rules { }"};
};

TEST_F(PanelTextTest, TheUsersOwnBytesStayAsTheyAre) {
  const std::string bytes("\xef\xbb\xbf/* no end\r\n\0@import", 23);
  for (const std::string& before : {std::string(), std::string("a { }"), std::string("a { }\n"), bytes}) {
    for (const std::string& added : {std::string(), std::string("b { }")}) {
      folder.write("gtk-3.0/gtk.css", before);
      EXPECT_TRUE(text.write(true) && text.write(true));
      EXPECT_EQ(text.look().now, true);
      EXPECT_TRUE(sheet().starts_with("@import url(\"veloria-mate.css\");")) << sheet();
      EXPECT_TRUE(exists("veloria-mate.css"));
      folder.write("gtk-3.0/gtk.css", added + sheet() + added);
      EXPECT_TRUE(text.write(false) && text.write(false));
      EXPECT_EQ(sheet(), added + before + added);
      EXPECT_FALSE(text.look().now == true || exists("veloria-mate.css"));
    }
  }
}

TEST_F(PanelTextTest, AFileThatWasNotThereGoesAndALinkStays) {
  fs::remove_all(folder.file("gtk-3.0"));
  for (const bool link : {false, true}) {
    if (link) fs::create_symlink("../dotfile.css", folder.file("gtk-3.0/gtk.css"));
    EXPECT_TRUE(text.write(true));
    EXPECT_EQ(fs::exists(folder.file("dotfile.css")), link);
    EXPECT_TRUE(text.write(false));
    EXPECT_EQ(exists("gtk.css"), link);
    EXPECT_FALSE(fs::exists(folder.file("dotfile.css")));
  }
  folder.write("dotfile.css", "mine");
  EXPECT_TRUE(text.write(true) && text.write(false));
  EXPECT_TRUE(fs::is_symlink(folder.file("gtk-3.0/gtk.css")));
  EXPECT_EQ(sheet(), "mine");
}

TEST_F(PanelTextTest, WhatCannotBeWrittenIsNamedAndNothingIsHalfDone) {
  const auto fails = [&](const std::string& reason) {
    const auto done = text.write(true);
    EXPECT_TRUE(!done && done.error().starts_with("The colour of the panel's text can't be changed: ")) << reason;
    EXPECT_TRUE(!done && done.error().find(reason) != std::string::npos) << done.error();
    EXPECT_FALSE(text.look().now == true || exists("veloria-mate.css")) << reason;
  };
  const std::string file = folder.file("gtk-3.0/gtk.css");
  fs::create_directories(file);
  fails("not a regular file");
  fs::remove(file);
  fs::create_symlink("gtk.css", file);
  fails("symbolic links");
  fs::remove(file);
  fs::create_symlink("/proc/no/such", file);
  fails("No such file");
  fs::remove(file);
  folder.write("gtk-3.0/gtk.css", std::string((1 << 20) + 1, ' '));
  fails("larger than");
  fs::remove_all(folder.file("gtk-3.0"));
  folder.write("gtk-3.0", "no folder");
  fails("no folder can be made");
}

}  // namespace
}  // namespace veloria::tests
