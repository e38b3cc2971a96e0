// What the settings of each desktop and wallpaper program say, from their texts.

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "platform/linux/wallpaper/PictureFinder.h"
#include "platform/linux/wallpaper/PictureSettings.h"

namespace veloria {
namespace {

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
      "org.gnome.desktop.background picture-opacity 100\n"
      "org.gnome.desktop.background picture-options 'zoom'\n"
      "org.gnome.desktop.background picture-uri 'file:///light.png'\n"
      "org.gnome.desktop.background picture-uri-dark 'file:///dark.png'\n";
  EXPECT_EQ(gsettingsPictureFromText(both, false), "file:///light.png");
  EXPECT_EQ(gsettingsPictureFromText(both, true), "file:///dark.png");
  const std::vector<Case> cases{
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
  };
  for (const Case& c : cases) EXPECT_EQ(gsettingsPictureFromText(c.text, true), c.address) << c.text;
}

TEST(GsettingsListing, OnlyPreferDarkIsDark) {
  EXPECT_TRUE(gsettingsPrefersDark("'prefer-dark'\n"));
  for (const char* text : {"", "'default'\n", "'prefer-light'\n", "prefer-dark"}) {
    EXPECT_FALSE(gsettingsPrefersDark(text)) << text;
  }
}

TEST(PlasmaSettings, NamesThePictureOfTheDesktopOnTheFirstScreen) {
  const std::string otherScreen =
      "[Containments][2]\nlastScreen=1\nwallpaperplugin=org.kde.image\n\n"
      "[Containments][2][Wallpaper][org.kde.image][General]\nImage=file:///second.png\n\n";
  const std::string firstScreen =
      "[Containments][10]\nactivityId=x\nlastScreen=0\nwallpaperplugin=org.kde.image\n\n"
      "[Containments][10][General]\nImage=file:///not-this.png\n\n"
      "[Containments][10][Wallpaper][org.kde.image][General]\nFillMode=2\nImage=file:///first.png\n";
  const std::vector<Case> cases{
      {otherScreen + firstScreen, "file:///first.png"},
      {firstScreen + otherScreen, "file:///first.png"},
      {otherScreen, "file:///second.png"},
      {"[Containments][1][Wallpaper][org.kde.image][General]\nImage[$e]=file://$HOME/a b.png\r\n",
       "file://$HOME/a b.png"},
      {R"([Containments][1][Wallpaper][org.kde.image][General]
Image=\s/a\\b)",
       R"( /a\b)"},
      {"[Containments][1]\nwallpaperplugin=org.kde.slideshow\n"
       "[Containments][1][Wallpaper][org.kde.slideshow][General]\nImage=/slide.jpg\n"
       "[Containments][1][Wallpaper][org.kde.image][General]\nImage=/stale.jpg\n",
       "/slide.jpg"},
      {"[Containments][1]\nwallpaperplugin=org.kde.color\n"
       "[Containments][1][Wallpaper][org.kde.image][General]\nImage=/stale.jpg\n",
       none},
      {"[Containments][1]\nlastScreen=0\nImage=/a\n", none},
      {"Image=/a\n[Containments\nImage=/a\n[]\nImage=/a\n[[][[\nImage=/a\n[Containments][\nImage=/a", none},
      {"", none},
  };
  for (const Case& c : cases) EXPECT_EQ(plasmaPictureFromText(c.text), c.address) << c.text;
}

TEST(PicturePackage, TakesTheSmallestLandscapePictureThatIsLargeEnough) {
  using Names = std::vector<std::string>;
  const std::vector<std::pair<Names, Address>> cases{
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

TEST(XfceSettings, NamesThePictureOfTheMonitorsFirstWorkspace) {
  const std::string ordinary =
      xfceBackdrop("monitorDP-1", xfceWorkspace("0", "5", "/a &amp; b.png") + xfceWorkspace("1", "5", "/second.png"));
  const std::string empty = xfceBackdrop("monitorDP-1", xfceWorkspace("0", "0", "/hidden.png"));
  const std::vector<ScreenCase> cases{
      {ordinary, "DP-1", "/a & b.png"},
      {ordinary, "HDMI-1", "/a & b.png"},
      {empty, "DP-1", none},
      {xfceBackdrop("monitorDP-1", xfceWorkspace("0", "0", "/hidden.png") + xfceWorkspace("1", "5", "/shown.png")),
       "DP-1", "/shown.png"},
      {xfceBackdrop("monitor0", R"(<property name="image-path" type="string" value="/old.png"/>)"), "DP-1", "/old.png"},
      {xfceBackdrop("desk", xfceWorkspace("0", "5", "/a.png")), "DP-1", none},
      {ordinary.substr(0, ordinary.find("/second")), "DP-1", "/a & b.png"},
      {"<property/></property></property>", "DP-1", none},
      {"", "DP-1", none},
      {"no xml", "DP-1", none},
  };
  for (const ScreenCase& c : cases) EXPECT_EQ(xfcePictureFromText(c.text, c.screen), c.address) << c.text;

  const std::string two = "<channel>" + xfceBackdrop("monitoreDP-1", xfceWorkspace("0", "5", "/left.png")) +
                          xfceBackdrop("monitor0", xfceWorkspace("0", "5", "/zero.png")) +
                          xfceBackdrop("monitorHDMI-1", xfceWorkspace("0", "5", "/right.png")) + "</channel>";
  EXPECT_EQ(xfcePictureFromText(two, "HDMI-1"), "/right.png");
  EXPECT_EQ(xfcePictureFromText(two, "DP-9"), "/zero.png");
}

TEST(Slideshow, NamesItsFirstPicture) {
  const std::vector<Case> cases{
      {"<background><starttime><year>2020</year></starttime><static><duration>1</duration><file>\n /a.png </file>"
       "</static><transition><from>/a.png</from><to>/b.png</to></transition></background>",
       "/a.png"},
      {"<background><transition><from>/b.png</from></transition><static><file>/c.png</file></static></background>",
       "/b.png"},
      {"<background><static><file><size width=\"1\" height=\"1\">/small.png</size><size>/large.png</size></file>",
       "/small.png"},
      {"<background><static><file></file><duration>5</duration></static></background>", none},
      {"<background/>", none},
      {"<!DOCTYPE b [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\"><!ENTITY c "
       "\"&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;\"><!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;\">"
       "]><b><file>&e;</file></b>",
       none},
  };
  for (const Case& c : cases) EXPECT_EQ(slideshowPictureFromText(c.text), c.address) << c.text;
}

/// Arguments with ' ' for the NUL after each and '|' for the one after each process.
std::string commandLines(std::string text) {
  for (char& c : text) c = c == ' ' || c == '|' ? '\0' : c;
  return text;
}

TEST(SwaybgArguments, NameThePictureOfTheOutput) {
  const std::vector<ScreenCase> cases{
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
  };
  for (const ScreenCase& c : cases) {
    EXPECT_EQ(swaybgPictureFromText(commandLines(c.text), c.screen), c.address) << c.text;
  }
}

TEST(SwwwQuery, ReportsThePictureOfTheOutput) {
  const std::string two =
      "eDP-1: 1920x1080, scale: 1, currently displaying: image: /home/u/a b.png\n"
      ": DP-2: 2560x1440, scale: 1, currently displaying: image: /c.png\n";
  const std::vector<ScreenCase> cases{
      {two, "eDP-1", "/home/u/a b.png"},
      {two, "DP-2", "/c.png"},
      {two, "DP-3", "/home/u/a b.png"},
      {"eDP-1: 1920x1080, scale: 1, currently displaying: color: 000000\n", "eDP-1", none},
      {"eDP-1: image: ", "eDP-1", none},
      {"", "", none},
  };
  for (const ScreenCase& c : cases) EXPECT_EQ(swwwPictureFromText(c.text, c.screen), c.address) << c.text;
}

TEST(HyprpaperSettings, NameThePictureOfTheMonitor) {
  const std::string lines =
      "preload = /a.png\n# wallpaper = DP-1,/commented.png\nwallpaper = , /every.png\n"
      "wallpaper=DP-1,contain:~/one.png # mine\n";
  const std::string blocks =
      "wallpaper {\n  monitor = DP-1\n  path = /one.png\n  fit_mode = cover\n}\nwallpaper {\n path = /every.png\n}\n";
  const std::vector<ScreenCase> cases{
      {lines, "DP-1", "~/one.png"},
      {lines, "DP-2", "/every.png"},
      {lines + "wallpaper = DP-1,/newer.png", "DP-1", "/newer.png"},
      {blocks, "DP-1", "/one.png"},
      {blocks, "DP-2", "/every.png"},
      {"wallpaper {\nmonitor = DP-1\n}\n", "DP-1", none},
      {"wallpaper {\npath = /open.png\n", "DP-1", none},
      {"wallpaper = DP-1\nwallpaper = DP-1,\n}\n", "DP-1", none},
      {"", "", none},
  };
  for (const ScreenCase& c : cases) EXPECT_EQ(hyprpaperPictureFromText(c.text, c.screen), c.address) << c.text;
}

}  // namespace
}  // namespace veloria
