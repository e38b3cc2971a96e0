#include "platform/linux/system/LinuxSystem.h"

#include <gmock/gmock.h>

#include <QDBusVariant>
#include <filesystem>
#include <fstream>

#include "PrivateBus.h"
#include "platform/linux/system/SettingsPanes.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using enum SystemPane;

const QString portal = "org.freedesktop.portal.Desktop";
const QString portalPath = "/org/freedesktop/portal/desktop";
const QString settings = "org.freedesktop.portal.Settings";

std::string dictionary(const std::string& name, const std::string& key, const std::string& value) {
  return "{'" + name + "': dbus.Dictionary({'" + key + "': " + value + "}, signature='sv')}";
}
std::string contrast(const std::string& value) {
  return dictionary("org.freedesktop.appearance", "contrast", value);
}
std::string highContrast(const std::string& value) {
  return dictionary("org.gnome.desktop.a11y.interface", "high-contrast", value);
}

class LinuxSystemTest : public BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (!IsSkipped()) variables_["DBUS_SESSION_BUS_ADDRESS"] = bus().address();
    gsettings("false");
  }

  void TearDown() override {
    system.reset();
    BusTest::TearDown();
  }

  void gsettings(const std::string& answer) {
    folder.writeProgram("programs/gsettings",
                        "#!/bin/sh\n[ \"$*\" = 'get org.gnome.desktop.a11y.interface "
                        "high-contrast' ] && echo " +
                            answer + "\n");
  }

  void startPortal(const std::string& answer) {
    serve(portal, {portal.toStdString(), portalPath.toStdString(), settings.toStdString()});
    setAnswer(answer);
  }

  static void setAnswer(const std::string& answer, const char* type = "a{sa{sv}}") {
    bus().mock(portal, portalPath, "AddMethod",
               {settings, "ReadAll", "as", type, QString::fromStdString("ret = " + answer)});
  }

  static void reportChange(const QString& name = "org.freedesktop.appearance") {
    bus().sendSignal(portal, portalPath, settings, "SettingChanged", "ssv",
                     {name, "contrast", QVariant::fromValue(QDBusVariant(1U))});
  }

  static std::size_t reads() { return bus().calls(portal, portalPath, "ReadAll").size(); }

  void startSystem(std::function<bool()> transparencyReduced = {}) {
    system = std::make_unique<LinuxSystem>(
        LinuxSystem::Options{.environment = environment(), .transparencyReduced = std::move(transparencyReduced)});
    system->setChangeHandler([this] { ++changes, system->facts(); });
  }

  TemporaryFolder folder;
  EnvironmentChange path{"PATH", folder.file("programs") + ":/usr/bin:/bin"};
  std::unique_ptr<LinuxSystem> system;
  int changes = 0;
};

TEST_F(LinuxSystemTest, KnowsReducedTransparencyAndNoGlassTint) {
  bool reduced = true;
  startSystem([&] { return reduced; });
  EXPECT_TRUE(system->facts().reduceTransparency);
  reduced = false;
  EXPECT_FALSE(system->facts().reduceTransparency);
  EXPECT_EQ(system->facts().glassTint, 0);
  startSystem();
  EXPECT_FALSE(system->facts().reduceTransparency);
}

TEST_F(LinuxSystemTest, FollowsThePortalsContrast) {
  startPortal(contrast("dbus.UInt32(1)"));
  startSystem();
  EXPECT_FALSE(system->facts().increaseContrast) << "it does not wait";
  const std::pair<std::string, bool> answers[] = {
      {contrast("dbus.UInt32(1)"), true},  {contrast("dbus.UInt32(0)"), false}, {highContrast("True"), true},
      {contrast("dbus.UInt32(7)"), false}, {contrast("dbus.UInt32(1)"), true},  {contrast("'1'"), false},
      {contrast("dbus.UInt32(1)"), true},  {highContrast("'true'"), false}};
  int expected = 0;
  for (const auto& [answer, increased] : answers) {
    setAnswer(answer);
    reportChange();
    EXPECT_TRUE(waitFor([&] { return changes > expected; })) << answer;
    EXPECT_EQ(changes, ++expected) << answer;
    EXPECT_EQ(system->facts().increaseContrast, increased) << answer;
  }
  runFor(0.2);
  const auto before = reads();
  reportChange("org.example.other");
  runFor(0.2);
  EXPECT_EQ(reads(), before) << "another setting, and no reads in a circle";
  for (const char* answer : {"{'': dbus.Dictionary({}, signature='sv')}", "{}"}) setAnswer(answer), reportChange();
  setAnswer("'contrast'", "s");
  reportChange();
  runFor(0.3);
  EXPECT_EQ(changes, expected) << "nonsense is no contrast";
}

TEST_F(LinuxSystemTest, ThePortalAndTheBusMayComeLateAndGo) {
  const auto increased = [&](bool wanted) {
    return waitFor([&] { return system->facts().increaseContrast == wanted; });
  };
  startSystem();
  system->facts();
  startPortal(contrast("dbus.UInt32(1)"));
  EXPECT_TRUE(increased(true));
  services_.clear();
  EXPECT_TRUE(increased(false));
  bus().stop();
  gsettings("true");
  EXPECT_TRUE(increased(true)) << "GNOME's own settings count without a bus";
  bus().start();
  startPortal(contrast("dbus.UInt32(0)"));
  EXPECT_TRUE(increased(false)) << "facts() connects again";
}

TEST_F(LinuxSystemTest, OpensThePanesOfTheDesktopWithWhatIsInstalled) {
  for (const char* desktop : {"gnome", "kde", "xfce", "cinnamon", "mate"}) {
    for (const SystemPane pane : {menuBar, appearance, accessibilityDisplay, wallpaper}) {
      EXPECT_FALSE(paneCommands({desktop}, pane).empty()) << desktop;
    }
  }
  const std::string programs = folder.file("settings");
  variables_["PATH"] = programs;
  for (const auto& [desktop, pane, program, arguments] : {
           std::tuple{"ubuntu:GNOME", wallpaper, "gnome-control-center", "[background]"},
           {"GNOME", menuBar, "gnome-control-center", "[]"},
           {"GNOME", accessibilityDisplay, "gnome-control-center", "[universal-access]"},
           {"KDE", wallpaper, "systemsettings", "[kcm_wallpaper]"},
           {"KDE", appearance, "kcmshell5", "[kcm_lookandfeel]"},
           {"XFCE", menuBar, "xfce4-panel", "[--preferences]"},
           {"XFCE", wallpaper, "xfce4-settings-manager", "[]"},
           {"X-Cinnamon", appearance, "cinnamon-settings", "[themes]"},
           {"MATE", wallpaper, "mate-appearance-properties", "[--show-page=background]"},
       }) {
    const std::string installed = folder.writeProgram(std::string("settings/") + program,
                                                      "#!/bin/sh\nprintf '[%s]' \"$@\" >\"$0.new\"\n"
                                                      "/bin/mv \"$0.new\" \"$0.arguments\"\n");
    variables_["XDG_CURRENT_DESKTOP"] = desktop;
    startSystem();
    const auto opened = system->open(pane);
    ASSERT_TRUE(opened) << desktop << ": " << opened.error();
    ASSERT_TRUE(waitFor([&] { return fs::exists(installed + ".arguments"); })) << desktop;
    std::string line;
    std::getline(std::ifstream(installed + ".arguments"), line);
    EXPECT_EQ(line, arguments) << desktop;
    fs::remove_all(programs);
  }
}

TEST_F(LinuxSystemTest, SaysThatNoPaneCanBeOpened) {
  variables_["PATH"] = folder.file("settings");
  const auto error = [&](const char* desktop) {
    variables_["XDG_CURRENT_DESKTOP"] = desktop;
    startSystem();
    return system->open(appearance).error();
  };
  for (const char* desktop : {"sway", "GNOME", ""}) {
    EXPECT_EQ(error(desktop), "Couldn't find the settings program of this desktop. Please open it yourself.")
        << desktop;
  }
  const std::string broken = folder.writeProgram("settings/gnome-control-center", "#!/no/such/interpreter\n");
  EXPECT_EQ(error("GNOME"), broken + " could not be started.");
}

}  // namespace
}  // namespace veloria::tests
