#include "platform/linux/activity/LinuxActivity.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "PrivateBus.h"

namespace veloria {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::PrivateBus;
using enum ActivityNotification;

constexpr double bound = 20;
constexpr double retrySeconds = 0.05;

constexpr const char* nobody = "raise dbus.exceptions.DBusException('none', name='org.example.NoSession')";

const QString login = "org.freedesktop.login1";
const QString loginPath = "/org/freedesktop/login1";
const QString manager = "org.freedesktop.login1.Manager";
const QString session = "org.freedesktop.login1.Session";
const QString power = "org.freedesktop.UPower";
const QString powerPath = "/org/freedesktop/UPower";
const QString saver = "org.freedesktop.ScreenSaver";

QString sessionPath(const QString& id) {
  return "/org/freedesktop/login1/session/" + id;
}

void runEventLoop() {
  static int argc = 1;
  static char name[] = "activity-test";
  static char* argv[] = {name, nullptr};
  static QCoreApplication application(argc, argv);
  QCoreApplication::processEvents(QEventLoop::AllEvents);
}

bool waitFor(const std::function<bool()>& condition, double seconds = bound) {
  return desktop::poll(seconds, [&] {
    runEventLoop();
    return condition();
  });
}

class LinuxActivityTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto missing = PrivateBus::missing(); !missing.empty()) GTEST_SKIP() << missing;
    runEventLoop();
    bus = std::make_unique<PrivateBus>(folder, "bus");
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = bus->address();
  }

  void TearDown() override {
    activity.reset();
    services.clear();
    bus.reset();
  }

  /// `byPid` is the code that answers which session a process is in.
  void startLogin(const std::string& byPid = "ret = '/org/freedesktop/login1/session/own'") {
    services[login] = bus->serve(login, {"-t", VELORIA_TEST_DATA "/login.py", "-p", "{\"byPid\": \"" + byPid + "\"}"});
  }

  void startPower(bool onBattery) {
    services[power] = bus->serve(power, {"-t", "upower"});
    setPower(onBattery);
  }

  void startSaver(const QString& name, const QString& path, bool active) {
    services[name] = bus->serve(name, {name.toStdString(), path.toStdString(), name.toStdString()});
    bus->mock(name, path, "AddMethod", {name, "GetActive", "", "b", active ? "ret = True" : "ret = False"});
  }

  void setPower(const QVariant& onBattery) {
    bus->mock(power, powerPath, "UpdateProperties", {power, QVariantMap{{"OnBattery", onBattery}}});
  }

  void startActivity() {
    activity = std::make_unique<LinuxActivity>(
        LinuxActivity::Options{.environment = [this](std::string_view name) -> std::optional<std::string> {
                                 const auto found = environment.find(name);
                                 return found == environment.end() ? std::nullopt : std::optional(found->second);
                               },
                               .powerSupplies = folder.file("supplies"),
                               .retrySeconds = retrySeconds});
    activity->setHandler([this](auto notification) { seen.push_back(notification); });
  }

  /// Returns once the login manager was asked for the session, so its signals are heard from now on.
  bool hearsLogin(int times = 1) {
    return waitFor([&] { return bus->calls(login, loginPath, "GetSessionByPID") >= times; });
  }

  void prepareForSleep(bool sleeping) { sendSignal(login, loginPath, manager, "PrepareForSleep", "b", {sleeping}); }

  void sendSignal(const QString& service, const QString& path, const QString& interface, const QString& name,
                  const QString& signature, const QVariantList& arguments) {
    bus->mock(service, path, "EmitSignal", {interface, name, signature, QVariant(arguments)});
  }

  void setSession(const QString& property, const QVariant& value, const QString& id = "own") {
    bus->mock(login, sessionPath(id), "UpdateProperties", {session, QVariantMap{{property, value}}});
  }

  /// Waits until as many notifications have come as are expected, compares them and forgets them.
  void expectSeen(const std::vector<LinuxActivity::Notification>& expected, const std::string& when) {
    waitFor([&] { return seen.size() >= expected.size(); });
    EXPECT_EQ(std::exchange(seen, {}), expected) << when;
  }

  /// What was sent before this has been heard when it returns: the session's state is told after it.
  void expectNothingElseSeen(const std::string& when) {
    setSession("LockedHint", true);
    expectSeen({sessionDidResignActive}, when);
    setSession("LockedHint", false);
    expectSeen({sessionDidBecomeActive}, when);
  }

  tests::TemporaryFolder folder;
  std::map<std::string, std::string, std::less<>> environment;
  std::unique_ptr<PrivateBus> bus;
  std::map<QString, std::unique_ptr<desktop::ChildProcess>> services;
  std::unique_ptr<LinuxActivity> activity;
  std::vector<LinuxActivity::Notification> seen;
};

TEST_F(LinuxActivityTest, FollowsSleepAndSessionInAnyOrder) {
  startLogin();
  startActivity();
  ASSERT_TRUE(hearsLogin());
  prepareForSleep(true);
  expectSeen({willSleep}, "it goes to sleep");
  prepareForSleep(false);
  expectSeen({didWake}, "it wakes");
  setSession("LockedHint", true);
  expectSeen({sessionDidResignActive}, "locked");
  prepareForSleep(true);
  prepareForSleep(false);
  expectSeen({willSleep, didWake}, "asleep while locked");
  setSession("Active", false);
  setSession("LockedHint", false);
  setSession("Active", true);
  expectSeen({sessionDidBecomeActive}, "unlocked while in the background, and back");
  prepareForSleep(true);
  expectSeen({willSleep}, "asleep again");
  setSession("LockedHint", true);
  expectSeen({sessionDidResignActive}, "locked on the way to sleep");
  prepareForSleep(false);
  setSession("LockedHint", false);
  expectSeen({didWake, sessionDidBecomeActive}, "unlocked after it woke");
  prepareForSleep(false);
  expectNothingElseSeen("it wakes without having slept");
}

TEST_F(LinuxActivityTest, ReadsWhatIsSoWhenItStarts) {
  startLogin();
  bus->mock(login, loginPath, "UpdateProperties", {manager, QVariantMap{{"PreparingForSleep", true}}});
  setSession("Active", false);
  startActivity();
  waitFor([&] { return seen.size() >= 2; });
  EXPECT_THAT(seen, testing::UnorderedElementsAre(willSleep, sessionDidResignActive));
  std::vector<LinuxActivity::Notification> late;
  activity->setHandler([&](auto notification) { late.push_back(notification); });
  EXPECT_THAT(late, ElementsAre(willSleep, sessionDidResignActive));
}

TEST_F(LinuxActivityTest, ALoginManagerThatEndsLeavesNothingAsleepAndCountsAgainWhenItIsBack) {
  startActivity();
  startLogin();
  ASSERT_TRUE(hearsLogin()) << "it came later";
  prepareForSleep(true);
  setSession("LockedHint", true);
  expectSeen({willSleep, sessionDidResignActive}, "asleep and locked");
  services.clear();
  expectSeen({didWake, sessionDidBecomeActive}, "the login manager is gone");
  startLogin();
  ASSERT_TRUE(hearsLogin());
  setSession("Active", false);
  expectSeen({sessionDidResignActive}, "it is back");
}

TEST_F(LinuxActivityTest, SurvivesTheBus) {
  startLogin();
  startActivity();
  ASSERT_TRUE(hearsLogin());
  prepareForSleep(true);
  setSession("Active", false);
  expectSeen({willSleep, sessionDidResignActive}, "asleep and in the background");
  bus->stop();
  services.clear();
  expectSeen({didWake, sessionDidBecomeActive}, "the bus is gone");
  bus->start();
  startLogin();
  ASSERT_TRUE(hearsLogin()) << "the bus is back";
  prepareForSleep(true);
  expectSeen({willSleep}, "with the bus back");
}

TEST_F(LinuxActivityTest, FindsTheSessionByItsNameAndThenByTheDisplay) {
  struct Case {
    const char* what;
    std::string byPid;
    std::string id;
    QString session;
  };
  for (const Case& c : {Case{"its name", nobody, "named", "named"}, Case{"the display", nobody, "", "shown"},
                        Case{"an answer that is no session", "ret = '/'", "named", "named"},
                        Case{"a name that is none", nobody, "no such", "shown"}}) {
    startLogin(c.byPid);
    environment["XDG_SESSION_ID"] = c.id;
    startActivity();
    setSession("Active", false, c.session);
    expectSeen({sessionDidResignActive}, c.what);
    activity.reset();
    services.clear();
  }
}

TEST_F(LinuxActivityTest, WithoutASessionItCountsAsActive) {
  startLogin(nobody);
  bus->mock(login, "/org/freedesktop/login1/user/me", "UpdateProperties",
            {"org.freedesktop.login1.User", QVariantMap{{"Display", "nonsense"}}});
  setSession("Active", false, "shown");
  startActivity();
  ASSERT_TRUE(waitFor([&] { return bus->calls(login, loginPath, "GetUser") == 1; })) << "the last resort";
  prepareForSleep(true);
  expectSeen({willSleep}, "the session of nobody plays no part");
}

TEST_F(LinuxActivityTest, NonsenseIsIgnored) {
  startLogin();
  auto impostor = bus->serve("org.example.Impostor",
                             {"org.example.Impostor", "/org/freedesktop/login1", "org.freedesktop.login1.Manager"});
  startActivity();
  ASSERT_TRUE(hearsLogin());
  sendSignal("org.example.Impostor", loginPath, manager, "PrepareForSleep", "b", {true});
  for (const auto& [signature, arguments] : {std::pair<QString, QVariantList>{"", {}},
                                             {"s", {"true"}},
                                             {"bb", {true, true}},
                                             {"u", {1U}},
                                             {"as", {QStringList{"a"}}}}) {
    sendSignal(login, loginPath, manager, "PrepareForSleep", signature, arguments);
  }
  sendSignal(login, sessionPath("own"), "org.freedesktop.DBus.Properties", "PropertiesChanged", "s", {"what"});
  sendSignal(login, sessionPath("own"), "org.freedesktop.DBus.Properties", "PropertiesChanged", "s", {session});
  setSession("Active", "no");
  setSession("LockedHint", 1);
  setSession("Active", true);
  expectNothingElseSeen("nonsense");
  for (int i = 0; i < 200; ++i) setSession("IdleHint", i % 2 == 0);
  expectNothingElseSeen("a storm");
}

TEST_F(LinuxActivityTest, AServiceThatDoesNotAnswerHoldsNothingUp) {
  startLogin("import time; time.sleep(2); ret = '/'");
  startPower(true);
  startActivity();
  EXPECT_TRUE(waitFor([&] { return activity->isOnBattery(); })) << "another service answers meanwhile";
  EXPECT_THAT(seen, IsEmpty());
  const double start = desktop::now();
  activity.reset();
  EXPECT_LT(desktop::now() - start, 1.5) << "it waited for the answer";
}

TEST_F(LinuxActivityTest, AskedForPowerItTellsWhatTheServiceSaysAndTheSuppliesWithoutOne) {
  startPower(false);
  startActivity();
  EXPECT_FALSE(activity->isOnBattery());
  setPower(true);
  EXPECT_TRUE(waitFor([&] { return activity->isOnBattery(); }));
  setPower(false);
  EXPECT_TRUE(waitFor([&] { return !activity->isOnBattery(); }));
  std::filesystem::create_directories(folder.file("supplies/battery"));
  folder.write("supplies/battery/type", "Battery\n");
  folder.write("supplies/battery/status", "Discharging\n");
  setPower(true);
  setPower(false);
  EXPECT_TRUE(waitFor([&] { return !activity->isOnBattery(); })) << "the service counts, not the supplies";
  services.clear();
  EXPECT_TRUE(waitFor([&] { return activity->isOnBattery(); })) << "the service is gone";
  folder.write("supplies/battery/status", "Charging\n");
  EXPECT_TRUE(waitFor([&] { return !activity->isOnBattery(); })) << "the supplies are looked at again";
  startPower(true);
  EXPECT_TRUE(waitFor([&] { return activity->isOnBattery(); })) << "the service is back";
  setPower("yes");
  EXPECT_TRUE(waitFor([&] { return !activity->isOnBattery(); })) << "nonsense leaves the supplies";
}

TEST_F(LinuxActivityTest, AScreenSaverPutsTheDisplaysToSleep) {
  environment["DBUS_SESSION_BUS_ADDRESS"] = bus->address();
  const QString saverPath = "/org/freedesktop/ScreenSaver";
  startSaver(saver, saverPath, true);
  startActivity();
  expectSeen({screensDidSleep}, "it was active before");
  sendSignal(saver, saverPath, saver, "ActiveChanged", "b", {false});
  expectSeen({screensDidWake}, "it ends");
  sendSignal(saver, saverPath, saver, "ActiveChanged", "s", {"true"});
  sendSignal(saver, saverPath, saver, "ActiveChanged", "b", {true});
  activity->setDisplaysOff(true);
  expectSeen({screensDidSleep}, "it starts, and the displays go off");
  services.clear();
  waitFor([&] { return !seen.empty(); }, 0.2);
  EXPECT_THAT(seen, IsEmpty()) << "the displays are still off";
  activity->setDisplaysOff(false);
  expectSeen({screensDidWake}, "the displays are on and the screen saver is gone");
}

TEST_F(LinuxActivityTest, NoServiceIsStartedByBeingAsked) {
  std::filesystem::create_directories(folder.file("dbus-1/services"));
  const std::string mark = folder.file("started");
  for (const QString& name : {login, power, saver}) {
    folder.write("dbus-1/services/" + name.toStdString() + ".service",
                 "[D-BUS Service]\nName=" + name.toStdString() + "\nExec=/bin/sh -c \"touch " + mark + "; exit 1\"\n");
  }
  const QString busService = "org.freedesktop.DBus";
  bus->call(busService, "/org/freedesktop/DBus", busService, "ReloadConfig");
  environment["DBUS_SESSION_BUS_ADDRESS"] = bus->address();
  startSaver("org.xfce.ScreenSaver", "/org/xfce/ScreenSaver", true);
  startActivity();
  expectSeen({screensDidSleep}, "the last one that is asked");
  EXPECT_FALSE(std::filesystem::exists(mark));
  EXPECT_ANY_THROW(bus->call(busService, "/org/freedesktop/DBus", busService, "StartServiceByName",
                             {saver, QVariant::fromValue(0U)}));
  EXPECT_TRUE(waitFor([&] { return std::filesystem::exists(mark); })) << "the bus could have started it";
}

TEST_F(LinuxActivityTest, ABusThatAcceptsAndSaysNothingHoldsNothingUp) {
  const std::string path = folder.file("silent");
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener, 4), 0);
  environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=" + path;
  const double start = desktop::now();
  startActivity();
  EXPECT_FALSE(activity->isOnBattery());
  EXPECT_LT(desktop::now() - start, 5);
  const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
  ASSERT_GE(connection, 0);
  close(listener);
  close(connection);
}

TEST_F(LinuxActivityTest, WithoutAnyBusItIsAwakeAndInFront) {
  for (const char* address : {"unix:path=/nonexistent/bus", "rubbish", "tcp:host=,port=x", "autolaunch:"}) {
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = environment["DBUS_SESSION_BUS_ADDRESS"] = address;
    startActivity();
    activity->setDisplaysOff(true);
    activity->setDisplaysOff(true);
    activity->setDisplaysOff(false);
    waitFor([] { return false; }, 2 * retrySeconds);
    expectSeen({screensDidSleep, screensDidWake}, address);
  }
}

}  // namespace
}  // namespace veloria
