#include "platform/linux/system/LinuxSystem.h"

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

std::string contrast(const std::string& value) {
  return "{'org.freedesktop.appearance': dbus.Dictionary({'contrast': " + value + "}, signature='sv')}";
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
    folder.writeProgram("programs/gsettings", "#!/bin/sh\n[ \"$3\" = high-contrast ] && echo " + answer + "\n");
  }

  void startPortal(const char* value) {
    serve(portal, {portal.toStdString(), portalPath.toStdString(), settings.toStdString()});
    setAnswer(contrast(value));
  }
  static void setAnswer(const std::string& answer) {
    bus().mock(portal, portalPath, "AddMethod",
               {settings, "ReadAll", "as", "a{sa{sv}}", QString::fromStdString("ret = " + answer)});
  }

  void startSystem() {
    system = std::make_unique<LinuxSystem>(LinuxSystem::Options{.environment = environment()});
    system->setChangeHandler([this] { ++changes, system->facts(); });
  }

  TemporaryFolder folder;
  EnvironmentChange path{"PATH", folder.file("programs") + ":/usr/bin:/bin"};
  std::unique_ptr<LinuxSystem> system;
  int changes = 0;
};

TEST_F(LinuxSystemTest, FollowsThePortalsContrast) {
  startPortal("dbus.UInt32(1)");
  startSystem();
  system->facts();
  const std::string highContrast =
      "{'org.gnome.desktop.a11y.interface': dbus.Dictionary({'high-contrast': True}, signature='sv')}";
  const std::pair<std::string, bool> answers[] = {{contrast("dbus.UInt32(1)"), true},
                                                  {contrast("dbus.UInt32(0)"), false},
                                                  {highContrast, true},
                                                  {contrast("'1'"), false}};
  int expected = 0;
  for (const auto& [answer, increased] : answers) {
    setAnswer(answer);
    bus().sendSignal(portal, portalPath, settings, "SettingChanged", "ssv",
                     {"org.freedesktop.appearance", "contrast", QVariant::fromValue(QDBusVariant(1U))});
    EXPECT_TRUE(waitFor([&] { return changes > expected; })) << answer;
    EXPECT_EQ(changes, ++expected) << answer;
    EXPECT_EQ(system->facts().increaseContrast, increased) << answer;
  }
  runFor(0.2);
  EXPECT_EQ(changes, expected) << "no reads in a circle";
}

TEST_F(LinuxSystemTest, ThePortalAndTheBusMayComeLateAndGo) {
  const auto increased = [&](bool wanted) {
    return waitFor([&] { return system->facts().increaseContrast == wanted; });
  };
  startSystem();
  system->facts();
  startPortal("dbus.UInt32(1)");
  EXPECT_TRUE(increased(true));
  services_.clear();
  EXPECT_TRUE(increased(false));
  bus().stop();
  gsettings("true");
  EXPECT_TRUE(increased(true)) << "GNOME's own settings count without a bus";
  bus().start();
  startPortal("dbus.UInt32(0)");
  EXPECT_TRUE(increased(false)) << "facts() connects again";
}

TEST_F(LinuxSystemTest, OpensThePanesOfTheDesktopWithWhatIsInstalled) {
  for (const SystemPane pane : {menuBar, appearance, accessibilityDisplay, wallpaper}) {
    for (const char* name : {"gnome", "kde", "xfce", "cinnamon", "mate"})
      EXPECT_FALSE(paneCommands({name}, pane).empty());
  }
  const std::string programs = folder.file("settings");
  variables_["PATH"] = programs;
  for (const auto& [desktop, pane, program, arguments] : {
           std::tuple{"ubuntu:GNOME", wallpaper, "gnome-control-center", "[background]"},
           {"KDE", appearance, "kcmshell5", "[kcm_lookandfeel]"},
           {"XFCE", wallpaper, "xfce4-settings-manager", "[]"},
       }) {
    const std::string installed = folder.writeProgram(std::string("settings/") + program,
                                                      "#!/bin/sh\nprintf '[%s]' \"$@\" >\"$0.new\"\n"
                                                      "/bin/mv \"$0.new\" \"$0.arguments\"\n");
    variables_["XDG_CURRENT_DESKTOP"] = desktop;
    startSystem();
    EXPECT_TRUE(system->open(pane)) << desktop;
    ASSERT_TRUE(waitFor([&] { return fs::exists(installed + ".arguments"); })) << desktop;
    std::string line;
    std::getline(std::ifstream(installed + ".arguments"), line);
    EXPECT_EQ(line, arguments) << desktop;
    fs::remove_all(programs);
    EXPECT_EQ(system->open(pane).error(),
              "Couldn't find the settings program of this desktop. Please open it yourself.");
  }
}

}  // namespace
}  // namespace veloria::tests
