#include "platform/linux/wallpaper/PictureFinder.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "Process.h"

namespace veloria {
namespace {

namespace fs = std::filesystem;

/// A home with settings files, a list of processes and programs, all made up.
const std::string plasmaSettings = "[Containments][1][Wallpaper][org.kde.image][General]\nImage=file:///kde.png\n";

class PictureFinderTest : public testing::Test {
 protected:
  void SetUp() override {
    surroundings_.home = folder_.file("home");
    surroundings_.config = folder_.file("home/.config");
    surroundings_.processes = folder_.file("proc");
    write("home/picture.png", "");
  }

  void TearDown() override {
    for (const auto& [name, value] : changed_) {
      value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
    }
  }

  void write(const std::string& name, const std::string& bytes) {
    fs::create_directories(fs::path(folder_.file(name)).parent_path());
    folder_.write(name, bytes);
  }

  /// A shell script on the PATH.
  void program(const std::string& name, const std::string& script) {
    write("bin/" + name, "#!/bin/sh\n" + script);
    fs::permissions(folder_.file("bin/" + name), fs::perms::owner_all);
    setVariable("PATH", folder_.file("bin") + ":/usr/bin:/bin");
  }

  void setVariable(const std::string& name, const std::string& value) {
    const char* old = ::getenv(name.c_str());
    changed_.try_emplace(name, old == nullptr ? std::nullopt : std::optional<std::string>(old));
    ::setenv(name.c_str(), value.c_str(), 1);
  }

  std::string home(const std::string& name) const { return (surroundings_.home / name).string(); }

  std::optional<fs::path> find(PictureSource source, std::string_view screen = "DP-1") const {
    return findPicture(source, surroundings_, screen);
  }

  tests::TemporaryFolder folder_;
  DesktopSurroundings surroundings_;
  std::map<std::string, std::optional<std::string>> changed_;
};

TEST_F(PictureFinderTest, ReadsEachProgramsOwnFile) {
  write("home/.config/plasma-org.kde.plasma.desktop-appletsrc", plasmaSettings);
  write("home/.config/xfce4/xfconf/xfce-perchannel-xml/xfce4-desktop.xml",
        R"(<channel><property name="monitor0" type="empty"><property name="workspace0" type="empty">)"
        R"(<property name="last-image" type="string" value="/xfce.png"/></property></property></channel>)");
  write("home/.config/hypr/hyprpaper.conf", "wallpaper = DP-2,/other.png\nwallpaper = DP-1,~/picture.png\n");
  EXPECT_EQ(find(PictureSource::plasma), "/kde.png");
  EXPECT_EQ(find(PictureSource::xfce), "/xfce.png");
  EXPECT_EQ(find(PictureSource::hyprpaper), home("picture.png"));
  EXPECT_EQ(find(PictureSource::hyprpaper, "DP-2"), "/other.png");
}

TEST_F(PictureFinderTest, FindsNothingInAnEmptyHome) {
  surroundings_.processes = folder_.file("home");
  for (const auto source : {PictureSource::plasma, PictureSource::xfce, PictureSource::swaybg, PictureSource::hyprpaper,
                            PictureSource::rootPixmap}) {
    EXPECT_EQ(find(source), std::nullopt) << static_cast<int>(source);
  }
}

TEST_F(PictureFinderTest, LooksIntoNoFolderOfNobody) {
  surroundings_.home.clear();
  surroundings_.config.clear();
  const fs::path before = fs::current_path();
  fs::current_path(folder_.path());
  write("plasma-org.kde.plasma.desktop-appletsrc", plasmaSettings);
  EXPECT_EQ(find(PictureSource::plasma), std::nullopt) << "the current folder is not the one of settings";
  fs::current_path(before);
}

TEST_F(PictureFinderTest, IgnoresOversizedSettings) {
  write("home/.config/plasma-org.kde.plasma.desktop-appletsrc",
        plasmaSettings + std::string(std::size_t{1} << 20, '#'));
  EXPECT_EQ(find(PictureSource::plasma), std::nullopt);
}

TEST_F(PictureFinderTest, ReadsTheCommandLinesOfSwaybg) {
  using namespace std::string_literals;
  write("proc/12/cmdline", "/usr/bin/swaybg\0-o\0DP-1\0-i\0/one.png\0"s);
  write("proc/13/cmdline", "swaybg\0-i\0/every.png\0"s);
  write("proc/14/cmdline", "vi\0swaybg\0-i\0/no.png\0"s);
  write("proc/self/cmdline", "swaybg\0-o\0DP-1\0-i\0/no.png\0"s);
  fs::create_directories(folder_.file("proc/15"));
  write("proc/16/cmdline", "");
  EXPECT_EQ(find(PictureSource::swaybg), "/one.png");
  EXPECT_EQ(find(PictureSource::swaybg, "HDMI-1"), "/every.png");
}

TEST_F(PictureFinderTest, AsksTheSwwwDaemon) {
  program("swww", "echo \"DP-1: 10x10, scale: 1, currently displaying: image: /$1.png\"");
  EXPECT_EQ(find(PictureSource::swww), "/query.png");
  program("swww", "echo 'DP-1: currently displaying: image: /a.png'; exit 1");
  EXPECT_EQ(find(PictureSource::swww), std::nullopt);
}

TEST_F(PictureFinderTest, ChoosesAPictureInAPackage) {
  write("home/.config/plasma-org.kde.plasma.desktop-appletsrc",
        "[Containments][1][Wallpaper][org.kde.image][General]\nImage=" + home("Waves/") + "\n");
  fs::create_directories(home("Waves"));
  EXPECT_EQ(find(PictureSource::plasma), std::nullopt);
  write("home/Waves/contents/images/2560x1600.jpg", "");
  write("home/Waves/contents/images/1280x800.jpg", "");
  EXPECT_EQ(find(PictureSource::plasma), home("Waves/contents/images/1280x800.jpg"));
}

TEST_F(PictureFinderTest, AsksTheBackgroundSettingsOfEachSchema) {
  program("gsettings",
          "case \"$1 $2\" in\n"
          "'list-recursively org.gnome.desktop.background') echo \"s picture-uri 'file:///light.png'\"\n"
          "  echo \"s picture-uri-dark 'file:///dark.png'\";;\n"
          "'list-recursively org.mate.background') echo \"s picture-filename '/mate.png'\";;\n"
          "'get org.gnome.desktop.interface') echo \"'prefer-dark'\";;\n"
          "*) exit 1;;\nesac\n");
  EXPECT_EQ(find(PictureSource::gnome), "/dark.png");
  EXPECT_EQ(find(PictureSource::mate), "/mate.png");
  EXPECT_EQ(find(PictureSource::cinnamon), std::nullopt);
}

TEST_F(PictureFinderTest, ReadsTheRealSettingsOfGnome) {
  const auto schemas = tests::runProcess("/usr/bin/env", {"gsettings", "list-schemas"});
  if (schemas.output.find("org.gnome.desktop.background\n") == std::string::npos) {
    GTEST_SKIP() << "gsettings or the schema org.gnome.desktop.background is not installed";
  }
  setVariable("GSETTINGS_BACKEND", "keyfile");
  setVariable("XDG_CONFIG_HOME", folder_.file("home/.config"));
  const std::string keys = "home/.config/glib-2.0/settings/keyfile";
  const std::string pictures = "[org/gnome/desktop/background]\npicture-uri='file:///l%20i.png'\n" +
                               ("picture-uri-dark='file://" + home("slides.xml")) + "'\n";
  write(keys, pictures);
  EXPECT_EQ(find(PictureSource::gnome), "/l i.png");
  write("home/slides.xml", "<background><static><file>/slide.png</file></static></background>");
  write(keys, pictures + "[org/gnome/desktop/interface]\ncolor-scheme='prefer-dark'\n");
  EXPECT_EQ(find(PictureSource::gnome), "/slide.png");
}

}  // namespace
}  // namespace veloria
