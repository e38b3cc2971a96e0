#include <gmock/gmock.h>

#include <functional>

#include "Process.h"
#include "platform/linux/wallpaper/PictureFinder.h"
#include "platform/linux/wallpaper/PictureSettings.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using enum PictureSource;
using Address = std::optional<std::string>;

constexpr auto none = std::nullopt;

std::string xfceBackdrop(const std::string& monitor, const std::string& content) {
  return R"(<channel name="xfce4-desktop"><property name="backdrop"><property name="screen0"><property name=")" +
         monitor + R"(" type="empty">)" + content + "</property></property></property></channel>";
}

std::string xfceWorkspace(const std::string& number, const std::string& style, const std::string& image) {
  return R"(<property name="workspace)" + number + R"(" type="empty"><property name="image-style" type="int" value=")" +
         style + R"("/><property name="last-image" type="string" value=")" + image + R"("/></property>)";
}

using Read = std::function<Address(const std::string& text, std::string_view screen)>;
const Read gsettings = [](const auto& text, auto) { return gsettingsPictureFromText(text, true); };
const Read plasmaFile = [](const auto& text, auto) { return plasmaPictureFromText(text); };
const Read slideshow = [](const auto& text, auto) { return slideshowPictureFromText(text); };
/// Arguments with ' ' for the NUL after each and '|' for the one after each process.
const Read swaybgArguments = [](std::string text, auto screen) {
  for (char& letter : text) letter = letter == ' ' || letter == '|' ? '\0' : letter;
  return swaybgPictureFromText(text, screen);
};

TEST(PictureSettings, NameThePictureOfTheScreen) {
  const std::string bothStyles =
      "s picture-opacity 100\ns picture-options 'zoom'\ns picture-uri '/light.png'\ns picture-uri-dark '/dark.png'\n";

  const std::string image = "[Wallpaper][org.kde.image][General]\nImage=";
  const std::string second = "[Containments][2]\nlastScreen=1\nwallpaperplugin=org.kde.image\n\n[Containments][2]" +
                             image + "file:///second.png\n\n";
  const std::string first =
      "[Containments][10]\nactivityId=x\nlastScreen=0\nwallpaperplugin=org.kde.image\n\n"
      "[Containments][10][General]\nImage=file:///not-this.png\n\n[Containments][10]" +
      image + "file:///first.png\n";
  const std::string stale = "[Containments][1]" + image + "/stale.jpg\n";

  const std::string hidden = xfceWorkspace("0", "0", "/hidden.png");
  const std::string ordinary =
      xfceBackdrop("monitorDP-1", xfceWorkspace("0", "5", "/a &amp; b.png") + xfceWorkspace("1", "5", "/second.png"));
  const std::string two = "<channel>" + xfceBackdrop("monitoreDP-1", xfceWorkspace("0", "5", "/left.png")) +
                          xfceBackdrop("monitor0", xfceWorkspace("0", "5", "/zero.png")) + "</channel>";
  const std::string swwwLines =
      "eDP-1: 1920x1080, scale: 1, currently displaying: image: /home/u/a b.png\n"
      ": DP-2: 2560x1440, scale: 1, currently displaying: image: /c.png\n";

  const std::string paperLines =
      "preload = /a.png\n# wallpaper = DP-1,/commented.png\nwallpaper = , /every.png\n"
      "wallpaper=DP-1,contain:~/one.png # mine\n";
  const std::string paperBlocks =
      "wallpaper {\n  monitor = DP-1\n  path = /one.png\n}\nwallpaper {\n path = /every.png\n}\n";

  const struct {
    Read read;
    std::string text;
    std::string screen;
    Address address;
  } cases[] = {
      {gsettings, bothStyles, "", "/dark.png"},
      {gsettings, "s picture-uri-dark ''\ns picture-uri '/a'", "", "/a"},
      {gsettings, "org.mate.background picture-filename '/m.jpg'\n", "", "/m.jpg"},
      {gsettings, "s picture-uri 'file:///a.png'\ns picture-options 'none'\n", "", none},
      {gsettings, R"(s picture-uri '/a\\n\'b')", "", R"(/a\n'b)"},
      {gsettings, R"(s picture-uri '/a\')", "", none},
      {gsettings, "s picture-urix '/a'\n picture-uri\npicture-uri '/b'", "", none},
      {plasmaFile, second + first, "", "file:///first.png"},
      {plasmaFile, "[Containments][1][Wallpaper][org.kde.image][General]\nImage[$e]=$HOME/a b\r\n", "", "$HOME/a b"},
      {plasmaFile, "[Containments][1]" + image + R"(\s/a\\b\n)", "", R"( /a\b\n)"},
      {plasmaFile,
       "[Containments][1]\nwallpaperplugin=org.kde.slideshow\n"
       "[Containments][1][Wallpaper][org.kde.slideshow][General]\nImage=/slide.jpg\n" +
           stale,
       "", "/slide.jpg"},
      {plasmaFile, "[Containments][1]\nwallpaperplugin=org.kde.color\n" + stale, "", none},
      {plasmaFile, "Image=/a\n[Containments\nImage=/a\n[]\nImage=/a\n[[][[\nImage=/a\n[Containments][\nImage=/a", "",
       none},
      {xfcePictureFromText, ordinary, "DP-1", "/a & b.png"},
      {xfcePictureFromText, two, "DP-9", "/zero.png"},
      {xfcePictureFromText, xfceBackdrop("monitorDP-1", hidden), "DP-1", none},
      {xfcePictureFromText, xfceBackdrop("monitorDP-1", hidden + xfceWorkspace("1", "5", "/shown.png")), "DP-1",
       "/shown.png"},
      {xfcePictureFromText, xfceBackdrop("monitor0", R"(<property name="image-path" type="string" value="/old.png"/>)"),
       "DP-1", "/old.png"},
      {xfcePictureFromText, ordinary.substr(0, ordinary.find("/second")), "DP-1", "/a & b.png"},
      {slideshow, "<b><starttime><year>2020</year></starttime><static><file>\n /a.png </file></static>", "", "/a.png"},
      {slideshow, "<b><transition><from>/b.png</from></transition><static><file>/c.png</file>", "", "/b.png"},
      {slideshow, "<b><static><file><size width=\"1\">/a.png</size><size>/b.png</size></file>", "", "/a.png"},
      {swaybgArguments, "swaybg -i /a.png -m fill |", "DP-1", "/a.png"},
      {swaybgArguments, "swaybg -o * -i /every.png -o DP-1 -i /one.png -m fit |", "DP-1", "/one.png"},
      {swaybgArguments, "swaybg -o DP-1 -i /one.png -o * -i /every.png |", "HDMI-1", "/every.png"},
      {swaybgArguments, "swaybg --output=DP-1 -i /one.png |swaybg -i /every.png |", "HDMI-1", "/every.png"},
      {swaybgArguments, "swaybg -i |", "DP-1", none},
      {swwwPictureFromText, swwwLines, "eDP-1", "/home/u/a b.png"},
      {swwwPictureFromText, swwwLines, "DP-2", "/c.png"},
      {swwwPictureFromText, "eDP-1: 1920x1080, scale: 1, currently displaying: color: 000000\n", "eDP-1", none},
      {hyprpaperPictureFromText, paperLines, "DP-1", "~/one.png"},
      {hyprpaperPictureFromText, paperLines, "DP-2", "/every.png"},
      {hyprpaperPictureFromText, paperBlocks, "DP-1", "/one.png"},
      {hyprpaperPictureFromText, "wallpaper {\npath = /open.png\n", "DP-1", none},
  };
  for (const auto& c : cases) EXPECT_EQ(c.read(c.text, c.screen), c.address) << c.text;
  EXPECT_EQ(gsettingsPictureFromText(bothStyles, false), "/light.png");
}

TEST(PicturePackage, GivesTheSmallestLandscapePictureThatIsLargeEnough) {
  using Names = std::vector<std::string>;
  const std::pair<Names, Address> cases[] = {
      {{"3840x2160.png", "1280x800.png", "5120x2880.png"}, "1280x800.png"},
      {{"360x720.jpg", "1080x1920.jpg", "3840x2160.jpg"}, "3840x2160.jpg"},
      {{"47x48.png", "48x47.png", "16x16.png"}, none},
      {{"readme.txt", "1920x1080", "x.png", "1920x.png", "99999999999x99999999999.png", "-5x-5.png", ""}, none},
  };
  for (const auto& [names, picture] : cases) EXPECT_EQ(packagePicture(names, 48), picture);
}

TEST(PictureAddress, LeadsToFilesOfThisMachineOnly) {
  const std::pair<std::string, std::optional<fs::path>> cases[] = {
      {"/a%20b.png", "/a%20b.png"},          {"file:///a%20b%C3%A9.png", "/a b\u00e9.png"},
      {"file://localhost/a.png", "/a.png"},  {"file:/a.png", "/a.png"},
      {"file:///a?b#c.png", "/a?b#c.png"},   {"~/a.png", "/home/u/a.png"},
      {"$HOME/a.png", "/home/u/a.png"},      {"file://$HOME/a%20b.png", "/home/u/a b.png"},
      {"~//etc/a.png", "/home/u/etc/a.png"},
  };
  for (const auto& [address, path] : cases) EXPECT_EQ(localPath(address, "/home/u"), path) << address;
  EXPECT_EQ(localPath("~/a.png", ""), none);
  EXPECT_EQ(localPath("/" + std::string(5000, 'a'), "/home/u"), none);
  for (const std::string_view address : {"file:///a%00b.png", "file://server/a.png", "file:", "file:a.png",
                                         "~other/a.png", "a.png", "https://example.invalid/a.png", ""}) {
    EXPECT_EQ(localPath(address, "/home/u"), none) << address;
  }
}

TEST(PictureSources, FollowTheDesktopInUse) {
  const std::tuple<const char*, const char*, std::vector<PictureSource>> cases[] = {
      {"ubuntu:GNOME", "", {gnome, rootPixmap}},
      {"X-Cinnamon", "", {cinnamon, rootPixmap}},
      {"KDE", "wayland-0", {plasma}},
      {"XFCE", "", {xfce, rootPixmap}},
      {"sway", "wayland-0", {swaybg, swww, hyprpaper}},
      {"Hyprland", "wayland-0", {hyprpaper, swww, swaybg}},
      {" : :i3:", "", {rootPixmap}},
  };
  for (const auto& [desktop, wayland, sources] : cases) {
    const auto surroundings =
        desktopSurroundings([&, names = desktop, display = wayland](std::string_view name) -> Address {
          if (name == "XDG_CURRENT_DESKTOP") return names;
          if (name == "WAYLAND_DISPLAY") return display;
          return name == "DISPLAY" ? ":0" : "";
        });
    EXPECT_EQ(pictureSources(surroundings), sources) << desktop;
  }
}

/// A home with settings files, a list of processes and programs, all made up.
class PictureFinderTest : public testing::Test {
 protected:
  PictureFinderTest() {
    surroundings_.home = folder_.file("home");
    surroundings_.config = folder_.file("home/.config");
    surroundings_.processes = folder_.file("proc");
  }

  void write(const std::string& name, const std::string& bytes) { folder_.writeProgram(name, bytes); }
  std::string home(const std::string& name) const { return (surroundings_.home / name).string(); }
  std::optional<fs::path> find(PictureSource source, std::string_view screen = "DP-1") const {
    return findPicture(source, surroundings_, screen);
  }

  TemporaryFolder folder_;
  EnvironmentChange path_{"PATH", folder_.file("bin") + ":/usr/bin:/bin"};
  DesktopSurroundings surroundings_;
};

TEST_F(PictureFinderTest, ReadsEachDesktopsFile) {
  for (const auto source : {plasma, xfce, swaybg, hyprpaper}) EXPECT_EQ(find(source), none);
  const std::string config = "home/.config/", plasmaConfig = config + "plasma-org.kde.plasma.desktop-appletsrc";
  const std::string plasmaPicture = "[Containments][1][Wallpaper][org.kde.image][General]\nImage=";
  write(plasmaConfig, plasmaPicture + "file:///kde.png\n");
  write(config + "xfce4/xfconf/xfce-perchannel-xml/xfce4-desktop.xml",
        xfceBackdrop("monitor0", xfceWorkspace("0", "5", "/xfce.png")));
  write(config + "hypr/hyprpaper.conf", "wallpaper = DP-2,/other.png\nwallpaper = DP-1,~/picture.png\n");
  EXPECT_EQ(find(plasma), "/kde.png");
  EXPECT_EQ(find(xfce), "/xfce.png");
  EXPECT_EQ(find(hyprpaper), home("picture.png"));
  write(plasmaConfig, plasmaPicture + "file:///kde.png\n" + std::string(std::size_t{1} << 20, '#'));
  EXPECT_EQ(find(plasma), none) << "too large";
  write(plasmaConfig, plasmaPicture + home("Waves/") + "\n");
  write("home/Waves/contents/images/2560x1600.jpg", "");
  write("home/Waves/contents/images/1280x800.jpg", "");
  EXPECT_EQ(find(plasma), home("Waves/contents/images/1280x800.jpg"));
}

TEST_F(PictureFinderTest, AsksTheRunningPrograms) {
  using namespace std::string_literals;
  write("proc/12/cmdline", "/usr/bin/swaybg\0-o\0DP-1\0-i\0/one.png\0"s);
  write("proc/13/cmdline", "swaybg\0-i\0/every.png\0"s);
  write("proc/14/cmdline", "vi\0swaybg\0-i\0/no.png\0"s);
  write("proc/self/cmdline", "swaybg\0-o\0DP-1\0-i\0/no.png\0"s);
  EXPECT_EQ(find(swaybg), "/one.png");
  EXPECT_EQ(find(swaybg, "HDMI-1"), "/every.png");
  write("bin/swww", "#!/bin/sh\necho \"DP-1: 10x10, scale: 1, currently displaying: image: /$1.png\"");
  EXPECT_EQ(find(swww), "/query.png");
}

TEST_F(PictureFinderTest, ReadsTheRealSettingsOfGnome) {
  if (runProcess("/usr/bin/env", {"gsettings", "list-keys", "org.gnome.desktop.background"}).exitCode != 0) {
    GTEST_SKIP() << "gsettings or the schema org.gnome.desktop.background is not installed";
  }
  const EnvironmentChange backend("GSETTINGS_BACKEND", "keyfile"), config("XDG_CONFIG_HOME", home(".config"));
  const std::string keys = "home/.config/glib-2.0/settings/keyfile";
  const std::string pictures = "[org/gnome/desktop/background]\npicture-uri='file:///l%20i.png'\n" +
                               ("picture-uri-dark='file://" + home("slides.xml")) + "'\n";
  write(keys, pictures);
  EXPECT_EQ(find(gnome), "/l i.png");
  write("home/slides.xml", "<background><static><file>/slide.png</file></static></background>");
  write(keys, pictures + "[org/gnome/desktop/interface]\ncolor-scheme='prefer-dark'\n");
  EXPECT_EQ(find(gnome), "/slide.png");
}

}  // namespace
}  // namespace veloria::tests
