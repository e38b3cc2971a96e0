// The panels of desktops by their own settings services: Xfce's real one, GSettings with a file behind it, and for
// Plasma a stand-in of the program that changes its style.

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "PrivateBus.h"
#include "platform/linux/panel/LinuxPanelClearing.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using Way = PanelClearing::Way;

struct Answer {
  std::string problem;
  std::string note;
};

class DesktopPanelsTest : public BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    variables_ = {{"DISPLAY", ":1"},
                  {"XDG_STATE_HOME", folder.file("state")},
                  {"XDG_CONFIG_HOME", folder.file("config")},
                  {"XDG_DATA_HOME", folder.file("data")},
                  {"XDG_DATA_DIRS", folder.file("system")}};
    if (!IsSkipped()) variables_["DBUS_SESSION_BUS_ADDRESS"] = bus().address();
  }
  void TearDown() override {
    clearing.reset();
    BusTest::TearDown();
  }

  /// Veloria beside this panel. In a new run it knows only what is on the disk.
  void start(const std::string& program) {
    fs::create_directories(folder.file("processes/7"));
    folder.write("processes/7/comm", program + "\n");
    clearing = std::make_unique<LinuxPanelClearing>(environment(), folder.file("processes"));
  }
  Answer answer(void (PanelClearing::*action)(PanelClearing::Answer)) {
    std::optional<Answer> answer;
    (*clearing.*action)([&](const std::string& problem, const std::string& note) { answer = {problem, note}; });
    EXPECT_FALSE(answer) << "it answers later";
    EXPECT_TRUE(waitFor([&] { return answer.has_value(); }));
    return answer.value_or(Answer{"none", ""});
  }
  /// Clears, and puts back in another run of the program; `values` tells what the desktop has.
  void expectRoundTrip(const std::string& program, const std::function<std::string()>& values,
                       const std::string& clear) {
    start(program);
    const std::string before = values();
    EXPECT_TRUE(clearing->offer().way == Way::oneClick || clearing->offer().way == Way::afterAsking);
    EXPECT_FALSE(clearing->letsLightThrough() || clearing->canRestore());
    int changes = 0;
    clearing->setChangeHandler([&] { ++changes; });
    EXPECT_EQ(answer(&PanelClearing::clear).problem, "");
    EXPECT_EQ(changes, 1);
    EXPECT_THAT(values(), HasSubstr(clear));
    EXPECT_TRUE(clearing->letsLightThrough() && clearing->canRestore());
    start(program);
    EXPECT_TRUE(clearing->letsLightThrough() && clearing->canRestore());
    EXPECT_EQ(answer(&PanelClearing::restore).problem, "");
    EXPECT_EQ(values(), before);
    EXPECT_FALSE(clearing->letsLightThrough() || clearing->canRestore());
    EXPECT_FALSE(fs::exists(folder.file("state/Veloria/panel.json")));
  }
  std::string text(const std::string& file) const {
    std::ifstream stream(folder.file(file));
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  TemporaryFolder folder;
  std::unique_ptr<PanelClearing> clearing;
};

class XfcePanelTest : public DesktopPanelsTest {
 protected:
  /// In the user's settings or, if they are locked, in the system's. Three panels: at the top, at the top but upright,
  /// and at the bottom.
  void startXfconf(const std::string& place = "config", const std::string& attributes = "") {
    const auto panel = [](const char* number, const char* rest) {
      return std::string("<property name=\"panel-") + number + "\" type=\"empty\">" + rest + "</property>";
    };
    const auto position = [](const char* text) {
      return std::string("<property name=\"position\" type=\"string\" value=\"") + text + "\"/>";
    };
    const std::string settings =
        "<?xml version=\"1.0\"?><channel name=\"xfce4-panel\" version=\"1.0\"" + attributes +
        "><property name=\"panels\" type=\"array\"><value type=\"int\" value=\"1\"/><value type=\"int\" value=\"2\"/>"
        "<value type=\"int\" value=\"3\"/><property name=\"dark-mode\" type=\"bool\" value=\"false\"/>" +
        panel("1",
              (position("p=6;x=0;y=0") + "<property name=\"background-style\" type=\"uint\" value=\"2\"/>").c_str()) +
        panel("2", (position("p=6;x=0;y=0") + "<property name=\"mode\" type=\"uint\" value=\"1\"/>").c_str()) +
        panel("3", position("p=10;x=0;y=0").c_str()) + "</property></channel>";
    const std::string below = place + "/xfce4/xfconf/xfce-perchannel-xml";
    fs::create_directories(folder.file(below));
    folder.write(below + "/xfce4-panel.xml", settings);
    const std::string daemon = "/usr/lib/x86_64-linux-gnu/xfce4/xfconf/xfconfd";
    if (!fs::exists(daemon)) GTEST_SKIP() << "xfconf is not installed (script/bootstrap installs it)";
    xfconf =
        std::make_unique<ChildProcess>(std::vector{daemon},
                                       std::map<std::string, std::string>{{"DBUS_SESSION_BUS_ADDRESS", bus().address()},
                                                                          {"XDG_CONFIG_HOME", folder.file("config")},
                                                                          {"XDG_CONFIG_DIRS", folder.file("etc")}},
                                       folder.file("xfconf.log"));
    // A question would start another one, with the settings of whoever runs the tests.
    auto connection = QDBusConnection::connectToBus(QString::fromStdString(bus().address()), "xfconf");
    const bool up = poll(20, [&] { return connection.interface()->isServiceRegistered("org.xfce.Xfconf").value(); });
    QDBusConnection::disconnectFromBus("xfconf");
    ASSERT_TRUE(up) << xfconf->output();
  }
  std::string values() const {
    return runProcess("/usr/bin/xfconf-query", {"-c", "xfce4-panel", "-l", "-v"}, "",
                      {"DBUS_SESSION_BUS_ADDRESS=" + bus().address()})
        .output;
  }

  std::unique_ptr<ChildProcess> xfconf;
};

TEST_F(XfcePanelTest, ThePanelsAreClearedAndPutBackAndRestartForTheirText) {
  startXfconf();
  if (IsSkipped()) return;
  const QString panel = "org.xfce.Panel";
  const QString path = "/org/xfce/Panel";
  serve(panel, {panel.toStdString(), path.toStdString(), panel.toStdString()});
  bus().mock(panel, path, "AddMethod", {panel, "Terminate", "b", "", ""});
  const auto value = [&](const std::string& key) {
    return runProcess("/usr/bin/xfconf-query", {"-c", "xfce4-panel", "-p", "/panels/" + key}, "",
                      {"DBUS_SESSION_BUS_ADDRESS=" + bus().address()})
        .output;
  };
  expectRoundTrip(
      "xfce4-panel",
      [&] {
        return value("panel-1/background-rgba") + value("panel-3/background-style") + values() +
               text("config/gtk-3.0/gtk.css");
      },
      "4 items:\n\n0.000000\n0.000000\n0.000000\n0.000000\n1\n");
  EXPECT_EQ(bus().calls(panel, path, "Terminate"), (std::vector<QVariantList>{{true}, {true}}));
}

TEST_F(XfcePanelTest, ASettingsServiceThatRefusesIsSilentOrAbsentIsNamed) {
  startXfconf("etc", " locked=\"*\" unlocked=\"nobody\"");
  if (IsSkipped()) return;
  const std::string before = values();
  start("xfce4-panel");
  EXPECT_THAT(answer(&PanelClearing::clear).problem, HasSubstr("Xfce's settings service failed: "));
  EXPECT_EQ(values(), before);
  EXPECT_FALSE(clearing->canRestore());
  xfconf->signal(SIGSTOP);
  EXPECT_THAT(answer(&PanelClearing::clear).problem, HasSubstr("Xfce's settings service failed: "));
  xfconf->signal(SIGCONT);
  EXPECT_EQ(values(), before);
  xfconf->stop();
  EXPECT_THAT(answer(&PanelClearing::clear).problem, HasSubstr("Xfce's settings service failed: "));
  EXPECT_FALSE(fs::exists(folder.file("state/Veloria/panel.json")));
}

class GsettingsPanelTest : public DesktopPanelsTest {
 protected:
  void SetUp() override {
    DesktopPanelsTest::SetUp();
    folder.write("all.gschema.xml", R"(<schemalist>
      <enum id="place"><value nick="top" value="0"/><value nick="bottom" value="1"/></enum>
      <enum id="type"><value nick="none" value="0"/><value nick="color" value="1"/></enum>
      <schema id="org.mate.panel" path="/org/mate/panel/">
        <key name="toplevel-id-list" type="as"><default>['low', "odd name", 'high']</default></key></schema>
      <schema id="org.mate.panel.toplevel"><key name="orientation" enum="place"><default>'top'</default></key></schema>
      <schema id="org.mate.panel.toplevel.background">
        <key name="type" enum="type"><default>'none'</default></key>
        <key name="color" type="s"><default>'#ffffff'</default></key></schema>
      <schema id="org.cinnamon" path="/org/cinnamon/">
        <key name="enabled-extensions" type="as"><default>[]</default></key></schema></schemalist>)");
    ASSERT_EQ(runProcess("/usr/bin/glib-compile-schemas", {folder.path()}).exitCode, 0);
  }
  static std::string gsettings(const std::vector<std::string>& arguments) {
    return runProcess("/usr/bin/gsettings", arguments).output;
  }
  static std::string background(const std::string& panel) {
    return gsettings(
        {"list-recursively", "org.mate.panel.toplevel.background:/org/mate/panel/toplevels/" + panel + "/background/"});
  }

  EnvironmentChange schemas{"GSETTINGS_SCHEMA_DIR", folder.path()};
  EnvironmentChange backend{"GSETTINGS_BACKEND", "keyfile"};
  EnvironmentChange config{"XDG_CONFIG_HOME", folder.file("config")};
  EnvironmentChange path{"PATH", folder.file("programs") + ":/usr/bin:/bin"};
};

TEST_F(GsettingsPanelTest, MatesPanelAtTheTopIsClearedAndPutBackAndRestartsForItsText) {
  variables_["PATH"] = folder.file("programs");
  folder.writeProgram("programs/mate-panel", "#!/bin/sh\necho $* >>" + folder.file("restarts") + "\n");
  fs::create_directories(folder.file("config/gtk-3.0"));
  folder.write("config/gtk-3.0/gtk.css", "my { }\n");
  gsettings({"set", "org.mate.panel.toplevel:/org/mate/panel/toplevels/low/", "orientation", "bottom"});
  expectRoundTrip(
      "mate-panel", [&] { return background("high") + background("low") + text("config/gtk-3.0/gtk.css"); },
      "org.mate.panel.toplevel.background color 'rgba(0,0,0,0)'\norg.mate.panel.toplevel.background type 'color'\n"
      "org.mate.panel.toplevel.background color '#ffffff'\norg.mate.panel.toplevel.background type 'none'\n@import ");
  EXPECT_TRUE(waitFor([&] { return text("restarts") == "--replace\n--replace\n"; })) << text("restarts");
}

TEST_F(GsettingsPanelTest, SettingsThatRefuseForgetOrFailChangeNothing) {
  const std::string before = background("high") + background("low");
  const std::string real = "exec /usr/bin/gsettings \"$@\"\n";
  for (const std::string& script : {std::string("[ $1 = set ] && exit 1\n") + real, "[ $1 = set ] && exit 0\n" + real,
                                    "[ $4 = \"'color'\" ] && exit 1\n" + real, std::string("exit 1\n"), real}) {
    folder.writeProgram("programs/gsettings", "#!/bin/sh\n" + script);
    start("mate-panel");  // there is no such program to restart
    EXPECT_NE(answer(&PanelClearing::clear).problem, "") << script;
    EXPECT_FALSE(clearing->letsLightThrough() || clearing->canRestore()) << script;
    EXPECT_EQ(background("high") + background("low"), before) << script;
    EXPECT_FALSE(fs::exists(folder.file("config/gtk-3.0/gtk.css"))) << script;
  }
}

TEST_F(GsettingsPanelTest, CinnamonGetsAnExtensionBesideOthers) {
  const auto list = [] { return gsettings({"get", "org.cinnamon", "enabled-extensions"}); };
  const std::string ours = "'veloria-clear-panel@tollmere.com'";
  const std::string installed = "data/cinnamon/extensions/veloria-clear-panel@tollmere.com/extension.js";
  expectRoundTrip("cinnamon", list, "[" + ours + "]");
  gsettings({"set", "org.cinnamon", "enabled-extensions", "['one@x']"});
  expectRoundTrip("cinnamon", list, "['one@x', " + ours + "]");
  EXPECT_FALSE(fs::exists(folder.file(installed)));
  EXPECT_EQ(answer(&PanelClearing::clear).problem, "");
  EXPECT_THAT(text(installed), HasSubstr("function enable()"));
  gsettings({"set", "org.cinnamon", "enabled-extensions", "[" + ours + ", 'two@x']"});
  EXPECT_EQ(answer(&PanelClearing::restore).problem, "");
  EXPECT_EQ(list(), "['two@x']\n") << "what the user has done since stays";
}

class PlasmaPanelTest : public DesktopPanelsTest {
 protected:
  void SetUp() override {
    DesktopPanelsTest::SetUp();
    folder.write("style", "default\n");
    folder.writeProgram(
        "programs/plasma-apply-desktoptheme",
        "#!/bin/sh\ncd " + folder.path() +
            "\nread -r now <style\n"
            "if [ \"$1\" = --list-themes ]; then echo 'Themes (of which one is in use):'\n"
            "  for each in air default veloria-clear; do\n"
            "    if [ $each = \"$now\" ]; then echo \" * $each (aktuelles Design)\"; else echo \" * $each\"; fi\n"
            "  done\nelif [ \"$1\" = refused ]; then exit 1\nelse echo \"$1\" >style\nfi\n");
    for (const char* style : {"breeze-dark", "night"}) {
      const std::string below = std::string("system/plasma/desktoptheme/") + style;
      fs::create_directories(folder.file(below));
      folder.write(below + "/colors", std::string("# ") + style +
                                          "\n[Colors:View]\nForegroundNormal=0,0,0\n"
                                          "[Colors:Window]\nForegroundNormal=252,252,252\n");
    }
    fs::create_directories(folder.file("config"));
  }
  std::string made(const std::string& file) const { return text("data/plasma/desktoptheme/veloria-clear/" + file); }

  EnvironmentChange path{"PATH", folder.file("programs") + ":/usr/bin:/bin"};
};

TEST_F(PlasmaPanelTest, AStyleLikeTheUsersWithAClearPanelAndLightText) {
  expectRoundTrip(
      "plasmashell", [&] { return text("style"); }, "veloria-clear");
  EXPECT_FALSE(fs::exists(folder.file("data/plasma/desktoptheme/veloria-clear")));
  EXPECT_EQ(answer(&PanelClearing::clear).problem, "");
  EXPECT_THAT(made("plasmarc"), HasSubstr("FallbackTheme=default\n"));
  EXPECT_THAT(made("translucent/widgets/panel-background.svg"), HasSubstr("fill-opacity=\"0\""));
  EXPECT_THAT(made("colors"), HasSubstr("breeze-dark")) << "the default colours have dark text";
  EXPECT_EQ(answer(&PanelClearing::restore).problem, "");

  folder.write("config/kdeglobals", "[Colors:Window]\nForegroundNormal=250,250,250\n");
  EXPECT_EQ(answer(&PanelClearing::clear).problem, "");
  EXPECT_EQ(made("colors"), "") << "the user's own are light";
}

TEST_F(PlasmaPanelTest, AnOddStyleToPutBackOrNoProgramChangesNothing) {
  start("plasmashell");
  EXPECT_EQ(answer(&PanelClearing::clear).problem, "");
  for (const char* style : {"\"refused\"", "\"--list-themes\"", "\"../x\"", "3", "null"}) {
    const std::string journal =
        std::string(R"({"plasma": {"style": {"after": "veloria-clear", "before": )") + style + "}}}";
    folder.write("state/Veloria/panel.json", journal);
    EXPECT_NE(answer(&PanelClearing::restore).problem, "") << style;
    EXPECT_EQ(text("style"), "veloria-clear\n") << style;
    EXPECT_EQ(text("state/Veloria/panel.json"), journal);
  }
  fs::remove(folder.file("programs/plasma-apply-desktoptheme"));
  EXPECT_THAT(answer(&PanelClearing::clear).problem, HasSubstr("plasma-apply-desktoptheme is missing"));
}

TEST_F(DesktopPanelsTest, OthersAreClearedByHandOrNotAtAll) {
  for (const auto& [program, way, lines] : {std::tuple{"tint2", Way::byHand, "panel_background_id = 0"},
                                            {"waybar", Way::byHand, "background: transparent"},
                                            {"swaybar", Way::byHand, "#00000000"},
                                            {"polybar", Way::byHand, "#00000000"},
                                            {"gnome-shell", Way::none, ""},
                                            {"unknown", Way::none, ""}}) {
    start(program);
    EXPECT_EQ(clearing->offer().way, way) << program;
    EXPECT_THAT(clearing->offer().lines, HasSubstr(lines)) << program;
    EXPECT_EQ(answer(&PanelClearing::clear).problem, clearing->offer().text) << program;
    EXPECT_EQ(answer(&PanelClearing::restore).note, "There is nothing to put back.");
    EXPECT_FALSE(clearing->letsLightThrough() || clearing->canRestore());
  }
}

}  // namespace
}  // namespace veloria::tests
