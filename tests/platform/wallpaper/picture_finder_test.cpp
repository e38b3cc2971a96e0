// The texts of each desktop's and wallpaper program's settings, and the files that they lead to.

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
  return R"(<channel name="xfce4-desktop" version="1.0"><property name="backdrop" type="empty">)"
         R"(<property name="screen0" type="empty"><property name=")" +
         monitor + R"(" type="empty">)" + content +
         "</property></property></property><property name=\"last\" type=\"empty\"/></channel>";
}

std::string xfceWorkspace(const char* number, const char* style, const std::string& image) {
  return std::string("<property name=\"workspace") + number +
         "\" type=\"empty\"><property name=\"color-style\" type=\"int\" value=\"0\"/>"
         "<property name=\"image-style\" type=\"int\" value=\"" +
         style + "\"/><property name=\"last-image\" type=\"string\" value=\"" + image + "\"/></property>";
}

using Read = std::function<Address(const std::string& text, std::string_view screen)>;
const Read lightGsettings = [](const auto& text, auto) { return gsettingsPictureFromText(text, false); };
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
      "org.gnome.desktop.background picture-opacity 100\norg.gnome.desktop.background picture-options 'zoom'\n"
      "org.gnome.desktop.background picture-uri 'file:///light.png'\n"
      "org.gnome.desktop.background picture-uri-dark 'file:///dark.png'\n";

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
  const std::string three = "<channel>" + xfceBackdrop("monitoreDP-1", xfceWorkspace("0", "5", "/left.png")) +
                            xfceBackdrop("monitor0", xfceWorkspace("0", "5", "/zero.png")) +
                            xfceBackdrop("monitorHDMI-1", xfceWorkspace("0", "5", "/right.png")) + "</channel>";

  const std::string entities =
      "<!DOCTYPE b [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\"><!ENTITY c "
      "\"&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;\"><!ENTITY e "
      "\"&d;&d;&d;&d;&d;&d;&d;&d;\">]><b><file>&e;</file></b>";

  const std::string swwwLines =
      "eDP-1: 1920x1080, scale: 1, currently displaying: image: /home/u/a b.png\n"
      ": DP-2: 2560x1440, scale: 1, currently displaying: image: /c.png\n";

  const std::string paperLines =
      "preload = /a.png\n# wallpaper = DP-1,/commented.png\nwallpaper = , /every.png\n"
      "wallpaper=DP-1,contain:~/one.png # mine\n";
  const std::string paperBlocks =
      "wallpaper {\n  monitor = DP-1\n  path = /one.png\n  fit_mode = cover\n}\nwallpaper {\n path = /every.png\n}\n";

  const struct {
    Read read;
    std::string text;
    std::string screen;
    Address address;
  } cases[] = {
      {lightGsettings, bothStyles, "", "file:///light.png"},
      {gsettings, bothStyles, "", "file:///dark.png"},
      {gsettings, "", "", none},
      {gsettings, "s picture-uri ''\n", "", none},
      {gsettings, "s picture-uri-dark ''\ns picture-uri '/a'", "", "/a"},
      {gsettings, "org.mate.background picture-filename '/m.jpg'\n", "", "/m.jpg"},
      {gsettings, "s picture-uri 'file:///a.png'\ns picture-options 'none'\n", "", none},
      {gsettings, R"(s picture-uri "file:///it's \"one\".png")", "", "file:///it's \"one\".png"},
      {gsettings, R"(s picture-uri '/a\\n\'b')", "", R"(/a\n'b)"},
      {gsettings, R"(s picture-uri '/a\nb')", "", none},
      {gsettings, R"(s picture-uri '/a\')", "", none},
      {gsettings, "s picture-uri '/half", "", none},
      {gsettings, "s picture-uri '", "", none},
      {gsettings, "s picture-uri uint32 5", "", none},
      {gsettings, "s picture-urix '/a'\n picture-uri\npicture-uri '/b'", "", none},
      {gsettings, "No such schema “org.gnome.desktop.background”\n", "", none},
      {plasmaFile, second + first, "", "file:///first.png"},
      {plasmaFile, first + second, "", "file:///first.png"},
      {plasmaFile, second, "", "file:///second.png"},
      {plasmaFile, "[Containments][1][Wallpaper][org.kde.image][General]\nImage[$e]=$HOME/a b\r\n", "", "$HOME/a b"},
      {plasmaFile, "[Containments][1]" + image + R"(\s/a\\b\n)", "", R"( /a\b\n)"},
      {plasmaFile,
       "[Containments][1]\nwallpaperplugin=org.kde.slideshow\n"
       "[Containments][1][Wallpaper][org.kde.slideshow][General]\nImage=/slide.jpg\n" +
           stale,
       "", "/slide.jpg"},
      {plasmaFile, "[Containments][1]\nwallpaperplugin=org.kde.color\n" + stale, "", none},
      {plasmaFile, "[Containments][1]\nlastScreen=0\nImage=/a\n", "", none},
      {plasmaFile, "[Others][1]" + image + "/a\n", "", none},
      {plasmaFile, "Image=/a\n[Containments\nImage=/a\n[]\nImage=/a\n[[][[\nImage=/a\n[Containments][\nImage=/a", "",
       none},
      {xfcePictureFromText, ordinary, "DP-1", "/a & b.png"},
      {xfcePictureFromText, ordinary, "HDMI-1", "/a & b.png"},
      {xfcePictureFromText, three, "HDMI-1", "/right.png"},
      {xfcePictureFromText, three, "DP-9", "/zero.png"},
      {xfcePictureFromText, xfceBackdrop("monitorDP-1", hidden), "DP-1", none},
      {xfcePictureFromText, xfceBackdrop("monitorDP-1", hidden + xfceWorkspace("1", "5", "/shown.png")), "DP-1",
       "/shown.png"},
      {xfcePictureFromText, xfceBackdrop("monitor0", R"(<property name="image-path" type="string" value="/old.png"/>)"),
       "DP-1", "/old.png"},
      {xfcePictureFromText, xfceBackdrop("desk", xfceWorkspace("0", "5", "/a.png")), "DP-1", none},
      {xfcePictureFromText, ordinary.substr(0, ordinary.find("/second")), "DP-1", "/a & b.png"},
      {xfcePictureFromText, "<property/></property></property>", "DP-1", none},
      {xfcePictureFromText, "no xml", "DP-1", none},
      {slideshow, "<background><starttime><year>2020</year></starttime><static><file>\n /a.png </file></static>", "",
       "/a.png"},
      {slideshow, "<b><transition><from>/b.png</from></transition><static><file>/c.png</file>", "", "/b.png"},
      {slideshow, "<b><static><file><size width=\"1\">/small.png</size><size>/large.png</size></file>", "",
       "/small.png"},
      {slideshow, "<b><static><file></file><duration>5</duration></static></b>", "", none},
      {slideshow, entities, "", none},
      {swaybgArguments, "swaybg -i /a.png -m fill |", "DP-1", "/a.png"},
      {swaybgArguments, "swaybg --image /a.png |", "DP-1", "/a.png"},
      {swaybgArguments, "swaybg --image=/a.png |", "DP-1", "/a.png"},
      {swaybgArguments, "swaybg -i/a.png |", "DP-1", "/a.png"},
      {swaybgArguments, "swaybg -o * -i /every.png -o DP-1 -i /one.png -m fit |", "DP-1", "/one.png"},
      {swaybgArguments, "swaybg -o DP-1 -i /one.png -o * -i /every.png |", "HDMI-1", "/every.png"},
      {swaybgArguments, "swaybg -o DP-1 -i /one.png -o DP-2 -i /two.png |", "HDMI-1", "/one.png"},
      {swaybgArguments, "swaybg --output=DP-1 -i /one.png |swaybg -i /every.png |", "HDMI-1", "/every.png"},
      {swaybgArguments, "swaybg -c #000000 |", "DP-1", none},
      {swaybgArguments, "swaybg -i |", "DP-1", none},
      {swaybgArguments, "swaybg -i", "DP-1", none},
      {swaybgArguments, "--imagery /a.png |", "DP-1", none},
      {swaybgArguments, "", "DP-1", none},
      {swwwPictureFromText, swwwLines, "eDP-1", "/home/u/a b.png"},
      {swwwPictureFromText, swwwLines, "DP-2", "/c.png"},
      {swwwPictureFromText, swwwLines, "DP-3", "/home/u/a b.png"},
      {swwwPictureFromText, "eDP-1: 1920x1080, scale: 1, currently displaying: color: 000000\n", "eDP-1", none},
      {swwwPictureFromText, "eDP-1: image: ", "eDP-1", none},
      {swwwPictureFromText, "", "", none},
      {hyprpaperPictureFromText, paperLines, "DP-1", "~/one.png"},
      {hyprpaperPictureFromText, paperLines, "DP-2", "/every.png"},
      {hyprpaperPictureFromText, paperLines + "wallpaper = DP-1,/newer.png", "DP-1", "/newer.png"},
      {hyprpaperPictureFromText, paperBlocks, "DP-1", "/one.png"},
      {hyprpaperPictureFromText, paperBlocks, "DP-2", "/every.png"},
      {hyprpaperPictureFromText, "wallpaper {\nmonitor = DP-1\n}\n", "DP-1", none},
      {hyprpaperPictureFromText, "wallpaper {\npath = /open.png\n", "DP-1", none},
      {hyprpaperPictureFromText, "wallpaper = DP-1\nwallpaper = DP-1,\n}\n", "DP-1", none},
  };
  for (const auto& c : cases) EXPECT_EQ(c.read(c.text, c.screen), c.address) << c.text;
  EXPECT_TRUE(gsettingsPrefersDark("'prefer-dark'\n"));
  for (const char* text : {"", "'default'\n", "prefer-dark"}) EXPECT_FALSE(gsettingsPrefersDark(text)) << text;
}

TEST(PicturePackage, GivesTheSmallestLandscapePictureThatIsLargeEnough) {
  using Names = std::vector<std::string>;
  const std::pair<Names, Address> cases[] = {
      {{"3840x2160.png", "1280x800.png", "5120x2880.png"}, "1280x800.png"},
      {{"360x720.jpg", "1080x1920.jpg", "3840x2160.jpg"}, "3840x2160.jpg"},
      {{"1080x1920.jpg", "360x720.jpg"}, "360x720.jpg"},
      {{"47x48.png", "48x47.png", "16x16.png"}, none},
      {{"48x48.webp"}, "48x48.webp"},
      {{"readme.txt", "1920x1080", "x.png", "1920x.png", "99999999999x99999999999.png", "-5x-5.png", ""}, none},
      {{}, none},
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
  for (const std::string& address :
       {std::string("file:///a%00b.png"), std::string("file://server/a.png"), std::string("file://"),
        std::string("file:"), std::string("file:a.png"), std::string("~other/a.png"), std::string("a.png"),
        std::string("../a.png"), std::string("https://example.invalid/a.png"), std::string(), std::string("/a\0b", 4),
        "/" + std::string(5000, 'a')}) {
    EXPECT_EQ(localPath(address, "/home/u"), none) << address.substr(0, 60);
  }
}

TEST(PictureSources, FollowTheDesktopInUse) {
  struct Desktop {
    const char* current;
    const char* session;
    std::string_view servers;
    std::vector<PictureSource> sources;
  };
  for (const Desktop& c : std::vector<Desktop>{
           {"ubuntu:GNOME", "", "x", {gnome, rootPixmap}},
           {"GNOME", "", "xw", {gnome}},
           {"Budgie:GNOME", "", "w", {gnome}},
           {"X-Cinnamon", "", "x", {cinnamon, rootPixmap}},
           {"MATE", "", "x", {mate, rootPixmap}},
           {"KDE", "", "xw", {plasma}},
           {"", "plasma", "x", {plasma, rootPixmap}},
           {"XFCE", "gnome", "x", {xfce, rootPixmap}},
           {"sway", "", "xw", {swaybg, swww, hyprpaper}},
           {"Hyprland", "", "w", {hyprpaper, swww, swaybg}},
           {"", "river", "w", {swaybg, swww, hyprpaper}},
           {" : :i3:", "", "x", {rootPixmap}},
           {"", "", "x", {rootPixmap}},
           {"", "", "", {}},
       }) {
    const auto surroundings = desktopSurroundings([&](std::string_view name) -> Address {
      if (name == "XDG_CURRENT_DESKTOP") return c.current;
      if (name == "XDG_SESSION_DESKTOP") return c.session;
      if (name == "DISPLAY") return c.servers.starts_with('x') ? ":0" : "";
      if (name == "WAYLAND_DISPLAY") return c.servers.ends_with('w') ? "wayland-0" : "";
      return name == "HOME" ? Address("/home/u") : none;
    });
    EXPECT_EQ(pictureSources(surroundings), c.sources) << c.current << " " << c.session;
    EXPECT_EQ(surroundings.home, "/home/u");
    EXPECT_EQ(surroundings.config, "/home/u/.config");
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
  void program(const std::string& name, const std::string& script) { write("bin/" + name, "#!/bin/sh\n" + script); }
  std::string home(const std::string& name) const { return (surroundings_.home / name).string(); }
  std::optional<fs::path> find(PictureSource source, std::string_view screen = "DP-1") const {
    return findPicture(source, surroundings_, screen);
  }

  const std::string plasmaFile_ = "plasma-org.kde.plasma.desktop-appletsrc";
  const std::string plasmaPicture_ = "[Containments][1][Wallpaper][org.kde.image][General]\nImage=";
  tests::TemporaryFolder folder_;
  EnvironmentChange path_{"PATH", folder_.file("bin") + ":/usr/bin:/bin"};
  DesktopSurroundings surroundings_;
};

TEST_F(PictureFinderTest, ReadsEachDesktopsFile) {
  for (const auto source : {plasma, xfce, swaybg, hyprpaper, rootPixmap}) EXPECT_EQ(find(source), none);
  const std::string config = "home/.config/";
  write(config + plasmaFile_, plasmaPicture_ + "file:///kde.png\n");
  write(config + "xfce4/xfconf/xfce-perchannel-xml/xfce4-desktop.xml",
        xfceBackdrop("monitor0", xfceWorkspace("0", "5", "/xfce.png")));
  write(config + "hypr/hyprpaper.conf", "wallpaper = DP-2,/other.png\nwallpaper = DP-1,~/picture.png\n");
  EXPECT_EQ(find(plasma), "/kde.png");
  EXPECT_EQ(find(xfce), "/xfce.png");
  EXPECT_EQ(find(hyprpaper), home("picture.png"));
  EXPECT_EQ(find(hyprpaper, "DP-2"), "/other.png");
  write(config + plasmaFile_, plasmaPicture_ + "file:///kde.png\n" + std::string(std::size_t{1} << 20, '#'));
  EXPECT_EQ(find(plasma), none) << "too large";
  write(config + plasmaFile_, plasmaPicture_ + home("Waves/") + "\n");
  fs::create_directories(home("Waves"));
  EXPECT_EQ(find(plasma), none) << "an empty package";
  write("home/Waves/contents/images/2560x1600.jpg", "");
  write("home/Waves/contents/images/1280x800.jpg", "");
  EXPECT_EQ(find(plasma), home("Waves/contents/images/1280x800.jpg"));
  surroundings_.config.clear();
  const fs::path before = fs::current_path();
  fs::current_path(folder_.path());
  write(plasmaFile_, plasmaPicture_ + "/here.png\n");
  EXPECT_EQ(find(plasma), none) << "the current folder is not the one of settings";
  fs::current_path(before);
}

TEST_F(PictureFinderTest, AsksTheRunningPrograms) {
  using namespace std::string_literals;
  write("proc/12/cmdline", "/usr/bin/swaybg\0-o\0DP-1\0-i\0/one.png\0"s);
  write("proc/13/cmdline", "swaybg\0-i\0/every.png\0"s);
  write("proc/14/cmdline", "vi\0swaybg\0-i\0/no.png\0"s);
  write("proc/self/cmdline", "swaybg\0-o\0DP-1\0-i\0/no.png\0"s);
  fs::create_directories(folder_.file("proc/15"));
  write("proc/16/cmdline", "");
  EXPECT_EQ(find(swaybg), "/one.png");
  EXPECT_EQ(find(swaybg, "HDMI-1"), "/every.png");
  program("swww", "echo \"DP-1: 10x10, scale: 1, currently displaying: image: /$1.png\"");
  EXPECT_EQ(find(swww), "/query.png");
  program("swww", "echo 'DP-1: currently displaying: image: /a.png'; exit 1");
  EXPECT_EQ(find(swww), none);
  program("gsettings",
          "case \"$1 $2\" in\n"
          "'list-recursively org.gnome.desktop.background') echo \"s picture-uri 'file:///light.png'\"\n"
          "  echo \"s picture-uri-dark 'file:///dark.png'\";;\n"
          "'list-recursively org.mate.background') echo \"s picture-filename '/mate.png'\";;\n"
          "'get org.gnome.desktop.interface') echo \"'prefer-dark'\";;\n"
          "*) exit 1;;\nesac\n");
  EXPECT_EQ(find(gnome), "/dark.png");
  EXPECT_EQ(find(mate), "/mate.png");
  EXPECT_EQ(find(cinnamon), none);
}

TEST_F(PictureFinderTest, ReadsTheRealSettingsOfGnome) {
  const auto schemas = runProcess("/usr/bin/env", {"gsettings", "list-schemas"});
  if (schemas.output.find("org.gnome.desktop.background\n") == std::string::npos) {
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
