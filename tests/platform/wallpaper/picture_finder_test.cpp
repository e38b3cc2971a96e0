// The texts of each desktop's and wallpaper program's settings, and the files that they lead to.

#include <gmock/gmock.h>

#include <map>

#include "Process.h"
#include "platform/linux/wallpaper/PictureFinder.h"
#include "platform/linux/wallpaper/PictureSettings.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using enum PictureSource;
using Address = std::optional<std::string>;

constexpr auto none = std::nullopt;

struct Case {
  std::string text;
  Address address;
};

struct ScreenCase {
  std::string text;
  std::string screen;
  Address address;
};

TEST(GsettingsListing, NamesThePictureOfTheStyleInUse) {
  const std::string both =
      "org.gnome.desktop.background picture-opacity 100\norg.gnome.desktop.background picture-options 'zoom'\n"
      "org.gnome.desktop.background picture-uri 'file:///light.png'\n"
      "org.gnome.desktop.background picture-uri-dark 'file:///dark.png'\n";
  EXPECT_EQ(gsettingsPictureFromText(both, false), "file:///light.png");
  for (const Case& c : std::vector<Case>{
           {both, "file:///dark.png"},
           {"", none},
           {"s picture-uri ''\n", none},
           {"s picture-uri-dark ''\ns picture-uri '/a'", "/a"},
           {"org.mate.background picture-filename '/m.jpg'\n", "/m.jpg"},
           {"s picture-uri 'file:///a.png'\ns picture-options 'none'\n", none},
           {R"(s picture-uri "file:///it's \"one\".png")", "file:///it's \"one\".png"},
           {R"(s picture-uri '/a\\n\'b')", R"(/a\n'b)"},
           {R"(s picture-uri '/a\nb')", none},
           {R"(s picture-uri '/a\')", none},
           {"s picture-uri '/half", none},
           {"s picture-uri '", none},
           {"s picture-uri uint32 5", none},
           {"s picture-urix '/a'\n picture-uri\npicture-uri '/b'", none},
           {"No such schema “org.gnome.desktop.background”\n", none},
       }) {
    EXPECT_EQ(gsettingsPictureFromText(c.text, true), c.address) << c.text;
  }
  EXPECT_TRUE(gsettingsPrefersDark("'prefer-dark'\n"));
  for (const char* text : {"", "'default'\n", "prefer-dark"}) EXPECT_FALSE(gsettingsPrefersDark(text)) << text;
}

TEST(PlasmaSettings, NameThePictureOfTheDesktopOnTheFirstScreen) {
  const std::string image = "[Wallpaper][org.kde.image][General]\nImage=";
  const std::string other = "[Containments][2]\nlastScreen=1\nwallpaperplugin=org.kde.image\n\n[Containments][2]" +
                            image + "file:///second.png\n\n";
  const std::string first =
      "[Containments][10]\nactivityId=x\nlastScreen=0\nwallpaperplugin=org.kde.image\n\n"
      "[Containments][10][General]\nImage=file:///not-this.png\n\n"
      "[Containments][10][Wallpaper][org.kde.image][General]\nFillMode=2\nImage=file:///first.png\n";
  const std::string stale = "[Containments][1]" + image + "/stale.jpg\n";
  for (const Case& c : std::vector<Case>{
           {other + first, "file:///first.png"},
           {first + other, "file:///first.png"},
           {other, "file:///second.png"},
           {"[Containments][1][Wallpaper][org.kde.image][General]\nImage[$e]=file://$HOME/a b.png\r\n",
            "file://$HOME/a b.png"},
           {"[Containments][1]" + image + R"(\s/a\\b\n)", R"( /a\b\n)"},
           {"[Containments][1]\nwallpaperplugin=org.kde.slideshow\n"
            "[Containments][1][Wallpaper][org.kde.slideshow][General]\nImage=/slide.jpg\n" +
                stale,
            "/slide.jpg"},
           {"[Containments][1]\nwallpaperplugin=org.kde.color\n" + stale, none},
           {"[Containments][1]\nlastScreen=0\nImage=/a\n", none},
           {"[Others][1]" + image + "/a\n", none},
           {"Image=/a\n[Containments\nImage=/a\n[]\nImage=/a\n[[][[\nImage=/a\n[Containments][\nImage=/a", none},
           {"", none},
       }) {
    EXPECT_EQ(plasmaPictureFromText(c.text), c.address) << c.text;
  }
}

std::string xfceBackdrop(const std::string& monitor, const std::string& content) {
  return R"(<channel name="xfce4-desktop" version="1.0"><property name="backdrop" type="empty">)"
         R"(<property name="screen0" type="empty"><property name=")" +
         monitor + R"(" type="empty">)" + content +
         "</property></property></property><property name=\"last\" type=\"empty\"/></channel>";
}

std::string xfceWorkspace(const std::string& number, const std::string& style, const std::string& image) {
  return "<property name=\"workspace" + number +
         "\" type=\"empty\"><property name=\"color-style\" type=\"int\" value=\"0\"/>"
         "<property name=\"image-style\" type=\"int\" value=\"" +
         style + "\"/><property name=\"last-image\" type=\"string\" value=\"" + image + "\"/></property>";
}

TEST(XfceSettings, NameThePictureOfTheMonitorsFirstWorkspace) {
  const std::string hidden = xfceWorkspace("0", "0", "/hidden.png");
  const std::string ordinary =
      xfceBackdrop("monitorDP-1", xfceWorkspace("0", "5", "/a &amp; b.png") + xfceWorkspace("1", "5", "/second.png"));
  const std::string three = "<channel>" + xfceBackdrop("monitoreDP-1", xfceWorkspace("0", "5", "/left.png")) +
                            xfceBackdrop("monitor0", xfceWorkspace("0", "5", "/zero.png")) +
                            xfceBackdrop("monitorHDMI-1", xfceWorkspace("0", "5", "/right.png")) + "</channel>";
  for (const ScreenCase& c : std::vector<ScreenCase>{
           {ordinary, "DP-1", "/a & b.png"},
           {ordinary, "HDMI-1", "/a & b.png"},
           {three, "HDMI-1", "/right.png"},
           {three, "DP-9", "/zero.png"},
           {xfceBackdrop("monitorDP-1", hidden), "DP-1", none},
           {xfceBackdrop("monitorDP-1", hidden + xfceWorkspace("1", "5", "/shown.png")), "DP-1", "/shown.png"},
           {xfceBackdrop("monitor0", R"(<property name="image-path" type="string" value="/old.png"/>)"), "DP-1",
            "/old.png"},
           {xfceBackdrop("desk", xfceWorkspace("0", "5", "/a.png")), "DP-1", none},
           {ordinary.substr(0, ordinary.find("/second")), "DP-1", "/a & b.png"},
           {"<property/></property></property>", "DP-1", none},
           {"", "DP-1", none},
           {"no xml", "DP-1", none},
       }) {
    EXPECT_EQ(xfcePictureFromText(c.text, c.screen), c.address) << c.text;
  }
}

TEST(Slideshow, NamesItsFirstPicture) {
  const std::string background = "<background>", end = "</background>";
  for (const Case& c : std::vector<Case>{
           {background +
                "<starttime><year>2020</year></starttime><static><duration>1</duration><file>\n /a.png </file>"
                "</static><transition><from>/a.png</from><to>/b.png</to></transition>" +
                end,
            "/a.png"},
           {background + "<transition><from>/b.png</from></transition><static><file>/c.png</file></static>" + end,
            "/b.png"},
           {background + "<static><file><size width=\"1\" height=\"1\">/small.png</size><size>/large.png</size></file>",
            "/small.png"},
           {background + "<static><file></file><duration>5</duration></static>" + end, none},
           {"<background/>", none},
           {"<!DOCTYPE b [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\"><!ENTITY c "
            "\"&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;\"><!ENTITY e "
            "\"&d;&d;&d;&d;&d;&d;&d;&d;\">]><b><file>&e;</file></b>",
            none},
       }) {
    EXPECT_EQ(slideshowPictureFromText(c.text), c.address) << c.text;
  }
}

/// Arguments with ' ' for the NUL after each and '|' for the one after each process.
TEST(SwaybgArguments, NameThePictureOfTheOutput) {
  for (const ScreenCase& c : std::vector<ScreenCase>{
           {"swaybg -i /a.png -m fill |", "DP-1", "/a.png"},
           {"swaybg --image /a.png |", "DP-1", "/a.png"},
           {"swaybg --image=/a.png |", "DP-1", "/a.png"},
           {"swaybg -i/a.png |", "DP-1", "/a.png"},
           {"swaybg -o * -i /every.png -o DP-1 -i /one.png -m fit |", "DP-1", "/one.png"},
           {"swaybg -o DP-1 -i /one.png -o * -i /every.png |", "HDMI-1", "/every.png"},
           {"swaybg -o DP-1 -i /one.png -o DP-2 -i /two.png |", "HDMI-1", "/one.png"},
           {"swaybg --output=DP-1 -i /one.png |swaybg -i /every.png |", "HDMI-1", "/every.png"},
           {"swaybg -c #000000 |", "DP-1", none},
           {"swaybg -i |", "DP-1", none},
           {"swaybg -i", "DP-1", none},
           {"--imagery /a.png |", "DP-1", none},
           {"", "DP-1", none},
       }) {
    std::string text = c.text;
    for (char& letter : text) letter = letter == ' ' || letter == '|' ? '\0' : letter;
    EXPECT_EQ(swaybgPictureFromText(text, c.screen), c.address) << c.text;
  }
}

TEST(SwwwQuery, ReportsThePictureOfTheOutput) {
  const std::string two =
      "eDP-1: 1920x1080, scale: 1, currently displaying: image: /home/u/a b.png\n"
      ": DP-2: 2560x1440, scale: 1, currently displaying: image: /c.png\n";
  for (const ScreenCase& c : std::vector<ScreenCase>{
           {two, "eDP-1", "/home/u/a b.png"},
           {two, "DP-2", "/c.png"},
           {two, "DP-3", "/home/u/a b.png"},
           {"eDP-1: 1920x1080, scale: 1, currently displaying: color: 000000\n", "eDP-1", none},
           {"eDP-1: image: ", "eDP-1", none},
           {"", "", none},
       }) {
    EXPECT_EQ(swwwPictureFromText(c.text, c.screen), c.address) << c.text;
  }
}

TEST(HyprpaperSettings, NameThePictureOfTheMonitor) {
  const std::string lines =
      "preload = /a.png\n# wallpaper = DP-1,/commented.png\nwallpaper = , /every.png\n"
      "wallpaper=DP-1,contain:~/one.png # mine\n";
  const std::string blocks =
      "wallpaper {\n  monitor = DP-1\n  path = /one.png\n  fit_mode = cover\n}\nwallpaper {\n path = /every.png\n}\n";
  for (const ScreenCase& c : std::vector<ScreenCase>{
           {lines, "DP-1", "~/one.png"},
           {lines, "DP-2", "/every.png"},
           {lines + "wallpaper = DP-1,/newer.png", "DP-1", "/newer.png"},
           {blocks, "DP-1", "/one.png"},
           {blocks, "DP-2", "/every.png"},
           {"wallpaper {\nmonitor = DP-1\n}\n", "DP-1", none},
           {"wallpaper {\npath = /open.png\n", "DP-1", none},
           {"wallpaper = DP-1\nwallpaper = DP-1,\n}\n", "DP-1", none},
           {"", "", none},
       }) {
    EXPECT_EQ(hyprpaperPictureFromText(c.text, c.screen), c.address) << c.text;
  }
}

TEST(PicturePackage, GivesTheSmallestLandscapePictureThatIsLargeEnough) {
  using Names = std::vector<std::string>;
  for (const auto& [names, picture] : std::vector<std::pair<Names, Address>>{
           {{"3840x2160.png", "1280x800.png", "5120x2880.png"}, "1280x800.png"},
           {{"360x720.jpg", "1080x1920.jpg", "3840x2160.jpg"}, "3840x2160.jpg"},
           {{"1080x1920.jpg", "360x720.jpg"}, "360x720.jpg"},
           {{"47x48.png", "48x47.png", "16x16.png"}, none},
           {{"48x48.webp"}, "48x48.webp"},
           {{"readme.txt", "1920x1080", "x.png", "1920x.png", "99999999999x99999999999.png", "-5x-5.png", ""}, none},
           {{}, none},
       }) {
    EXPECT_EQ(packagePicture(names, 48), picture);
  }
}

TEST(PictureAddress, LeadsToFilesOfThisMachineOnly) {
  using Path = std::optional<fs::path>;
  for (const auto& [address, path] : std::vector<std::pair<std::string, Path>>{
           {"/a%20b.png", "/a%20b.png"},
           {"file:///a%20b%C3%A9.png", "/a b\u00e9.png"},
           {"file://localhost/a.png", "/a.png"},
           {"file:/a.png", "/a.png"},
           {"file:///a?b#c.png", "/a?b#c.png"},
           {"file:///a%00b.png", none},
           {"file://server/a.png", none},
           {"file://", none},
           {"file:", none},
           {"file:a.png", none},
           {"~/a.png", "/home/u/a.png"},
           {"$HOME/a.png", "/home/u/a.png"},
           {"file://$HOME/a%20b.png", "/home/u/a b.png"},
           {"~//etc/a.png", "/home/u/etc/a.png"},
           {"~other/a.png", none},
           {"a.png", none},
           {"../a.png", none},
           {"https://example.invalid/a.png", none},
           {"", none},
           {std::string("/a\0b", 4), none},
           {"/" + std::string(5000, 'a'), none},
       }) {
    EXPECT_EQ(localPath(address, "/home/u"), path) << address.substr(0, 60);
  }
  EXPECT_EQ(localPath("~/a.png", ""), none);
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
