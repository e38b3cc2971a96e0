#include "platform/linux/system/LinuxSystem.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDBusVariant>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "PrivateBus.h"
#include "system/SystemState.h"

namespace veloria {
namespace {

namespace fs = std::filesystem;
using tests::PrivateBus;

constexpr double bound = 20;

const QString portal = "org.freedesktop.portal.Desktop";
const QString portalPath = "/org/freedesktop/portal/desktop";
const QString settings = "org.freedesktop.portal.Settings";
const QString common = "org.freedesktop.appearance";

void runEventLoop() {
  static int argc = 1;
  static char name[] = "system-test";
  static char* argv[] = {name, nullptr};
  static QCoreApplication application(argc, argv);
  QCoreApplication::processEvents(QEventLoop::AllEvents);
}

bool waitFor(const std::function<bool()>& condition) {
  return desktop::poll(bound, [&] {
    runEventLoop();
    return condition();
  });
}

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class LinuxSystemTest : public testing::Test {
 protected:
  void SetUp() override { runEventLoop(); }

  void TearDown() override {
    system.reset();
    service.reset();
    bus.reset();
  }

  /// False when there is nothing to make a bus of; the reason is then printed.
  bool startBus() {
    if (const auto missing = PrivateBus::missing(); !missing.empty()) return (std::puts(missing.c_str()), false);
    bus = std::make_unique<PrivateBus>(folder, "bus");
    environment["DBUS_SESSION_BUS_ADDRESS"] = bus->address();
    return true;
  }

  void startPortal(const std::string& answer) {
    service = bus->serve(portal, {portal.toStdString(), portalPath.toStdString(), settings.toStdString()});
    setAnswer(answer);
  }

  void setAnswer(const std::string& answer) {
    bus->mock(portal, portalPath, "AddMethod",
              {settings, "ReadAll", "as", "a{sa{sv}}", QString::fromStdString("ret = " + answer)});
  }

  static std::string contrast(const std::string& value) {
    return "{'org.freedesktop.appearance': dbus.Dictionary({'contrast': " + value + "}, signature='sv')}";
  }

  static std::string highContrast(const std::string& value) {
    return "{'org.gnome.desktop.a11y.interface': dbus.Dictionary({'high-contrast': " + value + "}, signature='sv')}";
  }

  void tellOfChange() {
    bus->mock(portal, portalPath, "EmitSignal",
              {settings, "SettingChanged", "ssv",
               QVariant(QVariantList{common, "contrast", QVariant::fromValue(QDBusVariant(1U))})});
  }

  void startSystem(std::function<bool()> transparencyReduced = {}) {
    system = std::make_unique<LinuxSystem>(
        LinuxSystem::Options{.environment = [this](std::string_view name) -> std::optional<std::string> {
                               const auto found = environment.find(name);
                               return found == environment.end() ? std::nullopt : std::optional(found->second);
                             },
                             .transparencyReduced = std::move(transparencyReduced)});
    system->setChangeHandler([this] { ++changes; });
  }

  /// What is known once the portal has been asked again, which takes no notice of us.
  bool contrastAfterALook() {
    const int before = bus->calls(portal, portalPath, "ReadAll");
    system->facts();
    waitFor([&] { return bus->calls(portal, portalPath, "ReadAll") > before; });
    for (int i = 0; i < 20; ++i) runEventLoop(), desktop::sleepBriefly();
    return system->facts().increaseContrast;
  }

  tests::TemporaryFolder folder;
  tests::EnvironmentChange path{"PATH", folder.file("programs") + ":/usr/bin:/bin"};
  std::map<std::string, std::string, std::less<>> environment;
  std::unique_ptr<PrivateBus> bus;
  std::unique_ptr<desktop::ChildProcess> service;
  std::unique_ptr<LinuxSystem> system;
  int changes = 0;
};

TEST_F(LinuxSystemTest, KnowsWhetherTransparencyCanBeHad) {
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
  if (!startBus()) GTEST_SKIP();
  startPortal(contrast("dbus.UInt32(1)"));
  startSystem();
  EXPECT_FALSE(system->facts().increaseContrast) << "it does not wait";
  EXPECT_TRUE(waitFor([&] { return changes == 1; }));
  EXPECT_TRUE(system->facts().increaseContrast);
  setAnswer(contrast("dbus.UInt32(0)"));
  tellOfChange();
  EXPECT_TRUE(waitFor([&] { return changes == 2; }));
  EXPECT_FALSE(system->facts().increaseContrast);
  setAnswer(highContrast("True"));
  tellOfChange();
  EXPECT_TRUE(waitFor([&] { return changes == 3; }));
  setAnswer(contrast("dbus.UInt32(7)"));
  EXPECT_FALSE(contrastAfterALook()) << "levels that nobody knows are no preference";
}

TEST_F(LinuxSystemTest, NonsenseFromThePortalIsNoContrast) {
  if (!startBus()) GTEST_SKIP();
  folder.writeProgram("programs/gsettings", "#!/bin/sh\necho false\n");
  startPortal("{}");
  startSystem();
  for (const std::string& answer :
       {contrast("'1'"), contrast("dbus.Int32(1)"), contrast("dbus.Array([1], signature='u')"), highContrast("'true'"),
        std::string("{'': dbus.Dictionary({}, signature='sv')}")}) {
    setAnswer(answer);
    EXPECT_FALSE(contrastAfterALook()) << answer;
  }
  bus->mock(portal, portalPath, "AddMethod", {settings, "ReadAll", "as", "s", "ret = 'contrast'"});
  EXPECT_FALSE(contrastAfterALook());
  EXPECT_EQ(changes, 0);
}

TEST_F(LinuxSystemTest, ThePortalMayComeLateAndGo) {
  if (!startBus()) GTEST_SKIP();
  folder.writeProgram("programs/gsettings", "#!/bin/sh\necho false\n");
  startSystem();
  system->facts();
  startPortal(contrast("dbus.UInt32(1)"));
  EXPECT_TRUE(waitFor([&] { return system->facts().increaseContrast; }));
  service.reset();
  EXPECT_TRUE(waitFor([&] { return !system->facts().increaseContrast; }));
  bus->stop();
  system->facts();
  bus->start();
  startPortal(contrast("dbus.UInt32(1)"));
  EXPECT_TRUE(waitFor([&] { return system->facts().increaseContrast; })) << "connected again because it was asked";
}

TEST_F(LinuxSystemTest, GnomesOwnSettingsCountWithoutAPortal) {
  folder.writeProgram("programs/gsettings",
                      "#!/bin/sh\n[ \"$*\" = 'get org.gnome.desktop.a11y.interface high-contrast' ] && echo true\n");
  startSystem();
  system->facts();
  EXPECT_TRUE(waitFor([&] { return changes == 1; }));
  EXPECT_TRUE(system->facts().increaseContrast);
}

TEST_F(LinuxSystemTest, ServesTheObservableStateWithoutGoingRound) {
  if (!startBus()) GTEST_SKIP();
  startPortal(contrast("dbus.UInt32(1)"));
  startSystem();
  class NoTimers final : public TimerFactory {
    std::unique_ptr<Timer> repeating(double, double, std::function<void()>) override { return nullptr; }
  } timers;
  SystemState state(*system, timers);
  EXPECT_TRUE(waitFor([&] { return state.facts().get().increaseContrast; }));
  for (int i = 0; i < 20; ++i) runEventLoop(), desktop::sleepBriefly();
  EXPECT_LE(bus->calls(portal, portalPath, "ReadAll"), 3) << "a change is not asked about over and over";
}

TEST_F(LinuxSystemTest, OpensThePanesOfTheDesktopWithWhatIsInstalled) {
  struct Case {
    const char* desktop;
    SystemPane pane;
    const char* program;
    const char* arguments;
  };
  using enum SystemPane;
  const std::vector<Case> cases{
      {"ubuntu:GNOME", wallpaper, "gnome-control-center", "[background]"},
      {"GNOME", menuBar, "gnome-control-center", "[]"},
      {"GNOME", accessibilityDisplay, "gnome-control-center", "[universal-access]"},
      {"KDE", wallpaper, "systemsettings", "[kcm_wallpaper]"},
      {"KDE", appearance, "kcmshell5", "[kcm_lookandfeel]"},
      {"XFCE", menuBar, "xfce4-panel", "[--preferences]"},
      {"XFCE", wallpaper, "xfce4-settings-manager", "[]"},
      {"X-Cinnamon", appearance, "cinnamon-settings", "[themes]"},
      {"MATE", wallpaper, "mate-appearance-properties", "[--show-page=background]"},
  };
  const std::string programs = folder.file("settings");
  environment["PATH"] = programs;
  for (const auto& [desktop, pane, program, arguments] : cases) {
    const std::string installed = folder.writeProgram(std::string("settings/") + program,
                                                      "#!/bin/sh\nprintf '[%s]' \"$@\" >\"$0.new\"\n"
                                                      "/bin/mv \"$0.new\" \"$0.arguments\"\n");
    environment["XDG_CURRENT_DESKTOP"] = desktop;
    startSystem();
    const auto opened = system->open(pane);
    ASSERT_TRUE(opened) << desktop << ": " << opened.error();
    ASSERT_TRUE(waitFor([&] { return fs::exists(installed + ".arguments"); })) << desktop;
    EXPECT_EQ(contentOf(installed + ".arguments"), arguments) << desktop;
    fs::remove_all(programs);
  }
}

TEST_F(LinuxSystemTest, SaysWhenNoPaneCanBeOpened) {
  const std::string text = "No settings program of this desktop was found. Open its settings yourself.";
  environment["PATH"] = folder.file("settings");
  for (const char* desktop : {"sway", "GNOME", ""}) {
    environment["XDG_CURRENT_DESKTOP"] = desktop;
    startSystem();
    EXPECT_EQ(system->open(SystemPane::appearance).error(), text) << desktop;
  }
  const std::string broken = folder.writeProgram("settings/gnome-control-center", "#!/no/such/interpreter\n");
  environment["XDG_CURRENT_DESKTOP"] = "GNOME";
  startSystem();
  EXPECT_EQ(system->open(SystemPane::appearance).error(), broken + " could not be started.");
}

}  // namespace
}  // namespace veloria
