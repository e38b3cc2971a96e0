#include "platform/linux/activity/LinuxActivity.h"

#include <gmock/gmock.h>

#include "LocalListener.h"
#include "PrivateBus.h"
#include "platform/linux/bus/BusLink.h"

namespace veloria::tests {
namespace {

using enum ActivityNotification;

const QString login = "org.freedesktop.login1";
const QString loginPath = "/org/freedesktop/login1";
const QString manager = "org.freedesktop.login1.Manager";
const QString session = "org.freedesktop.login1.Session";
const QString power = "org.freedesktop.UPower";
const QString saver = "org.freedesktop.ScreenSaver";
const QString saverPath = "/org/freedesktop/ScreenSaver";

constexpr const char* noSession = "raise dbus.exceptions.DBusException('none', name='org.example.NoSession')";

class LinuxActivityTest : public BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (!IsSkipped()) variables_["DBUS_SYSTEM_BUS_ADDRESS"] = bus().address();
  }

  void TearDown() override {
    activity.reset();
    BusTest::TearDown();
  }

  /// `byPid` is the code that answers which session a process is in.
  void startLogin(const std::string& byPid = "ret = '/org/freedesktop/login1/session/own'") {
    serve(login, {"-t", VELORIA_TEST_DATA "/login.py", "-p", "{\"byPid\": \"" + byPid + "\"}"});
  }

  void startPower(bool onBattery) {
    serve(power, {"-t", "upower"});
    setPower(onBattery);
  }
  static void setPower(const QVariant& value) {
    bus().setProperty(power, "/org/freedesktop/UPower", power, "OnBattery", value);
  }

  void startActivity() {
    activity = std::make_unique<LinuxActivity>(LinuxActivity::Options{
        .environment = environment(), .powerSupplies = folder.file("supplies"), .retrySeconds = 0.05});
    activity->setHandler([this](auto notification) { seen.push_back(notification); });
  }

  /// Returns once the login manager was asked for the session, so its signals are received from now on.
  static bool hearsLogin() {
    return waitFor([] { return !bus().calls(login, loginPath, "GetSessionByPID").empty(); });
  }

  static void prepareForSleep(const QVariant& sleeping, const QString& signature = "b") {
    bus().sendSignal(login, loginPath, manager, "PrepareForSleep", signature, {sleeping});
  }

  static void setSession(const QString& property, const QVariant& value, const QString& id = "own") {
    bus().setProperty(login, loginPath + "/session/" + id, session, property, value);
  }

  /// Waits for as many notifications as are expected, compares them and forgets them.
  void expectSeen(const std::vector<ActivityNotification>& expected, const std::string& when) {
    waitFor([&] { return seen.size() >= expected.size(); });
    EXPECT_EQ(std::exchange(seen, {}), expected) << when;
  }

  bool onBattery(bool wanted) {
    return waitFor([&] { return activity->isOnBattery() == wanted; });
  }

  TemporaryFolder folder;
  std::unique_ptr<LinuxActivity> activity;
  std::vector<ActivityNotification> seen;
};

TEST_F(LinuxActivityTest, FollowsSleepAndSessionAndIgnoresNonsense) {
  startLogin();
  const QString impostor = "org.example.Impostor";
  serve(impostor, {impostor.toStdString(), loginPath.toStdString(), manager.toStdString()});
  startActivity();
  ASSERT_TRUE(hearsLogin());
  prepareForSleep(true);
  prepareForSleep(false);
  setSession("LockedHint", true);
  expectSeen({willSleep, didWake, sessionDidResignActive}, "slept, then locked");
  setSession("Active", false);
  setSession("LockedHint", false);
  setSession("Active", true);
  expectSeen({sessionDidBecomeActive}, "unlocked in the background, and back");
  bus().sendSignal(impostor, loginPath, manager, "PrepareForSleep", "b", {true});
  prepareForSleep("true", "s");
  setSession("Active", "no");
  setSession("Active", true);
  setSession("LockedHint", true);
  expectSeen({sessionDidResignActive}, "none of the nonsense before it");
}

TEST_F(LinuxActivityTest, ReadsTheStateAtTheStart) {
  startLogin();
  bus().setProperty(login, loginPath, manager, "PreparingForSleep", true);
  setSession("Active", false);
  startActivity();
  waitFor([&] { return seen.size() >= 2; });
  EXPECT_THAT(seen, testing::UnorderedElementsAre(willSleep, sessionDidResignActive));
}

TEST_F(LinuxActivityTest, SurvivesTheEndOfTheLoginManagerAndOfTheBus) {
  startActivity();
  for (const bool withBus : {false, true}) {
    startLogin();
    ASSERT_TRUE(hearsLogin()) << "it came later";
    prepareForSleep(true);
    setSession("LockedHint", true);
    expectSeen({willSleep, sessionDidResignActive}, "asleep and locked");
    if (withBus) bus().stop();
    services_.clear();
    expectSeen({didWake, sessionDidBecomeActive}, "nobody says so any more");
    if (withBus) bus().start();
  }
  startLogin();
  EXPECT_TRUE(hearsLogin()) << "the bus is back";
}

TEST_F(LinuxActivityTest, FindsTheSessionByItsNameAndThenByTheDisplay) {
  for (const auto& [byPid, id, found] :
       {std::tuple{noSession, "named", "named"}, {"ret = '/'", "named", "named"}, {noSession, "no such", "shown"}}) {
    startLogin(byPid);
    variables_["XDG_SESSION_ID"] = id;
    startActivity();
    setSession("Active", false, found);
    expectSeen({sessionDidResignActive}, found);
    activity.reset();
    services_.clear();
  }
}

TEST_F(LinuxActivityTest, AServiceOrABusThatDoesNotAnswerBlocksNothing) {
  startLogin("import time; time.sleep(2); ret = '/'");
  startPower(true);
  startActivity();
  EXPECT_TRUE(onBattery(true)) << "another service answers meanwhile";
  double start = now();
  activity.reset();
  EXPECT_LT(now() - start, 1.5) << "it waited for the answer";

  const LocalListener silent(folder.file("silent"));
  variables_["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=" + folder.file("silent");
  start = now();
  startActivity();
  EXPECT_FALSE(activity->isOnBattery());
  EXPECT_LT(now() - start, 5);
  EXPECT_TRUE(silent.accept());
}

TEST_F(LinuxActivityTest, TakesThePowerFromTheServiceElseFromTheSupplies) {
  startPower(false);
  startActivity();
  std::filesystem::create_directories(folder.file("supplies/battery"));
  folder.write("supplies/battery/type", "Battery\n");
  folder.write("supplies/battery/status", "Discharging\n");
  setPower(false);
  EXPECT_TRUE(onBattery(false)) << "the service counts, not the supplies";
  services_.clear();
  EXPECT_TRUE(onBattery(true)) << "the service is gone";
  folder.write("supplies/battery/status", "Charging\n");
  EXPECT_TRUE(onBattery(false)) << "the supplies are read again";
  startPower(true);
  EXPECT_TRUE(onBattery(true)) << "the service is back";
}

TEST_F(LinuxActivityTest, AScreenSaverPutsTheDisplaysToSleep) {
  variables_["DBUS_SESSION_BUS_ADDRESS"] = bus().address();
  serve(saver, {saver.toStdString(), saverPath.toStdString(), saver.toStdString()});
  bus().mock(saver, saverPath, "AddMethod", {saver, "GetActive", "", "b", "ret = True"});
  startActivity();
  expectSeen({screensDidSleep}, "it was active before");
  bus().sendSignal(saver, saverPath, saver, "ActiveChanged", "b", {false});
  expectSeen({screensDidWake}, "it ends");
  bus().sendSignal(saver, saverPath, saver, "ActiveChanged", "s", {"true"});
  bus().sendSignal(saver, saverPath, saver, "ActiveChanged", "b", {true});
  expectSeen({screensDidSleep}, "it starts");
  services_.clear();
  expectSeen({screensDidWake}, "it is gone");
}

TEST(BusAddresses, ComeFromTheEnvironment) {
  const auto usual = busAddresses(environmentOf({{"XDG_RUNTIME_DIR", "/run/u"}}));
  EXPECT_EQ(usual.system, "unix:path=/var/run/dbus/system_bus_socket");
  EXPECT_EQ(usual.session, "unix:path=/run/u/bus");
  EXPECT_EQ(busAddresses(environmentOf({{"DBUS_SESSION_BUS_ADDRESS", "autolaunch:"}})).session, "");
}

}  // namespace
}  // namespace veloria::tests
