// The status icon as a panel that hosts status notifiers sees it, over a real bus.

#include <gtest/gtest.h>

#include <QAbstractEventDispatcher>
#include <QDBusVariant>
#include <QTimer>
#include <csignal>
#include <string>
#include <vector>

#include "StatusHost.h"
#include "TrayFixture.h"
#include "settings/LookPreset.h"

namespace veloria::tests {
namespace {

const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");

using Labels = std::vector<QString>;

class StatusNotifierTest : public TrayTest {
 protected:
  static void SetUpTestSuite() { startOnX11(); }

  void SetUp() override {
    TrayTest::SetUp();
    if (IsSkipped()) return;
    host_ = std::make_unique<StatusHost>(bus(), [](const auto& condition) { return waitFor(condition); });
  }

  void TearDown() override {
    TrayTest::TearDown();
    host_.reset();
  }

  void start() {
    host_->startWatcher();
    startIcon();
    ASSERT_TRUE(host_->hasIcon());
  }

  StatusHost& host() { return *host_; }

 private:
  std::unique_ptr<StatusHost> host_;
};

TEST_F(StatusNotifierTest, theHostSeesIconToolTipAndMenu) {
  start();
  if (HasFatalFailure()) return;
  EXPECT_TRUE(log_.empty());
  EXPECT_EQ(host().property("Status"), "Active");
  EXPECT_EQ(host().property("Category"), "ApplicationStatus");
  EXPECT_NE(host().property("Title"), "");
  EXPECT_EQ(host().toolTip(), "Veloria — click for settings");
  EXPECT_FALSE(host().property("ItemIsMenu").toBool()) << "a plain click is ours";

  const MenuLine menu = host().menu();
  EXPECT_EQ(menu.labels(),
            (Labels{"Veloria 1.2", "---", "Pause Nimbra", "---", "Preset", "Colour", "Pointer interaction", "---",
                    "Settings…", "Restart Simulation", "---", "Quit Veloria"}));
  EXPECT_FALSE(menu.children.at(0).enabled());
  EXPECT_TRUE(menu.children.at(2).enabled());
  EXPECT_EQ(menu.find("Preset").labels().size(), LookPreset::all().size());
  EXPECT_EQ(menu.find("Pointer interaction").labels(),
            (Labels{"None", "Glow follow", "Push the fluid", "Swirl", "Calm"}));
  EXPECT_EQ(menu.find("Pointer interaction").checkedLabels(), Labels{"Swirl"});
  EXPECT_EQ(menu.find("Colour").checkedLabels(), Labels{"Classic Nimbra"});
  EXPECT_EQ(menu.find("Preset").checkedLabels(), Labels{});

  EXPECT_EQ(menu.find("Settings…").shortcut(), (QStringList{"Control", ","}));
  EXPECT_EQ(menu.find("Quit Veloria").shortcut(), (QStringList{"Control", "Q"}));
  EXPECT_TRUE(menu.find("Restart Simulation").shortcut().isEmpty());
}

TEST_F(StatusNotifierTest, theMenuDoesWhatItSays) {
  start();
  if (HasFatalFailure()) return;
  const LookPreset& preset = LookPreset::all().back();
  const struct {
    QString label;
    std::function<bool()> done;
  } steps[] = {
      {"Pause Nimbra", [&] { return !config().enabled; }},
      {"Resume Nimbra", [&] { return config().enabled; }},
      {QString::fromUtf8(preset.name.data(), static_cast<qsizetype>(preset.name.size())),
       [&] { return config() == veloria::choose(NimbraConfig(), preset); }},
      {"Nebula", [&] { return config().paletteName == "Nebula"; }},
      {"Push the fluid", [&] { return config().pointerMode == PointerMode::push; }},
      {"Restart Simulation", [&] { return resets_ == 1; }},
      {"Settings…", [&] { return presenter_.shows == 1; }},
      {"Quit Veloria", [&] { return ends_ == 1; }},
  };
  for (const auto& step : steps) {
    EXPECT_TRUE(host().choose(step.label)) << step.label.toStdString();
    EXPECT_TRUE(waitFor(step.done)) << step.label.toStdString();
  }
  EXPECT_EQ(host().menu().find("Colour").checkedLabels(), Labels{"Nebula"});
  EXPECT_TRUE(host().choose("Push the fluid"));
  runFor(0.3);
  EXPECT_EQ(config().pointerMode, PointerMode::push);
  EXPECT_EQ(host().menu().find("Pointer interaction").checkedLabels(), Labels{"Push the fluid"}) << "still";
}

TEST_F(StatusNotifierTest, theMenuFollowsTheSettings) {
  start();
  if (HasFatalFailure()) return;
  NimbraConfig changed;
  changed.enabled = false;
  changed.paletteName = "none of ours";
  changed.pointerMode = PointerMode::none;
  settings_.setConfig(changed);
  const MenuLine menu = host().menu();
  EXPECT_NE(menu.find("Resume Nimbra").id, 0);
  EXPECT_EQ(menu.find("Pause Nimbra").id, 0);
  EXPECT_EQ(menu.find("Colour").checkedLabels(), Labels{});
  EXPECT_EQ(menu.find("Pointer interaction").checkedLabels(), Labels{"None"});
}

TEST_F(StatusNotifierTest, theIconStandsOutFromThePanelThatTheDesktopIsTakenToHave) {
  const auto brightness = [&] {
    const auto pictures = host().pictures();
    return pictures.empty() ? -1 : pictures.front().brightness();
  };
  start();
  if (HasFatalFailure()) return;
  const auto pictures = host().pictures();
  ASSERT_FALSE(pictures.empty());
  for (const IconPicture& picture : pictures) {
    EXPECT_EQ(picture.width, picture.height);
    EXPECT_EQ(picture.pixels.size(), 4 * picture.width * picture.height);
    EXPECT_GT(picture.brightness(), 180) << picture.width << ": light, while nothing is known of the panel";
  }

  const auto program = bus().serve(portal, {"-t", VELORIA_TEST_DATA "/portal.py"});
  EXPECT_TRUE(waitFor([&] { return brightness() < 80; })) << "dark, where the desktop prefers light windows";
  const QString settings = "org.freedesktop.portal.Settings";
  const auto prefer = [&](const QString& space, const QString& value) {
    const QString answer =
        "ret = {'org.freedesktop.appearance': dbus.Dictionary({'color-scheme': " + value + "}, signature='sv')}";
    bus().mock(portal, portalPath, "AddMethod", {settings, "ReadAll", "as", "a{sa{sv}}", answer});
    bus().mock(portal, portalPath, "EmitSignal",
               {settings, "SettingChanged", "ssv",
                QVariant(QVariantList{space, "color-scheme", QVariant::fromValue(QDBusVariant(1U))})});
  };
  prefer("org.example.other", "dbus.UInt32(1)");
  runFor(0.3);
  EXPECT_LT(brightness(), 80) << "another setting of the same name";
  prefer("org.freedesktop.appearance", "dbus.UInt32(1)");
  EXPECT_TRUE(waitFor([&] { return brightness() > 180; })) << "and light, where it prefers dark ones";
  prefer("org.freedesktop.appearance", "dbus.UInt32(2)");
  EXPECT_TRUE(waitFor([&] { return brightness() < 80; }));
  prefer("org.freedesktop.appearance", "'nonsense'");
  EXPECT_TRUE(waitFor([&] { return brightness() > 180; }));
}

TEST_F(StatusNotifierTest, aClickTogglesTheSettingsAndTheMenuNeverDoes) {
  start();
  if (HasFatalFailure()) return;
  desktop().runToEnd({"xdotool", "mousemove", "300", "200"});
  host().click("Activate");
  EXPECT_TRUE(presenter_.shown);
  EXPECT_EQ(presenter_.place, (Rect{300, 200, 1, 1})) << "where the pointer is";
  EXPECT_FALSE(menuIsOpen());
  host().click("ContextMenu");
  EXPECT_TRUE(presenter_.shown);
  EXPECT_TRUE(menuIsOpen());
  closeMenu();
  host().click("SecondaryActivate");
  EXPECT_TRUE(presenter_.shown) << "the middle button is nobody's";
  host().click("Activate");
  EXPECT_FALSE(presenter_.shown);
  host().click("ContextMenu");
  EXPECT_FALSE(presenter_.shown);
}

TEST_F(StatusNotifierTest, aClickWithTheControlKeyIsForTheMenu) {
  start();
  if (HasFatalFailure()) return;
  desktop().runToEnd({"xdotool", "keydown", "Control_L"});
  host().click("Activate");
  desktop().runToEnd({"xdotool", "keyup", "Control_L"});
  EXPECT_FALSE(presenter_.shown);
  EXPECT_TRUE(menuIsOpen());
  closeMenu();
  host().click("Activate");
  EXPECT_TRUE(presenter_.shown);
  EXPECT_FALSE(menuIsOpen());
}

TEST_F(StatusNotifierTest, aHostThatComesLaterIsUsedAndOneThatRestartsGetsItAgain) {
  startIcon();
  ASSERT_TRUE(waitFor([&] { return !log_.empty(); }));
  EXPECT_NE(log_.front().find("start veloria again"), std::string::npos);
  host().startWatcher(false);
  runFor(0.5);
  EXPECT_EQ(host().registrations(), 0) << "nobody shows it";
  host().announceHost();
  EXPECT_TRUE(host().hasIcon());
  host().stopWatcher();
  host().startWatcher();
  EXPECT_TRUE(host().hasIcon()) << "the panel started again";
  EXPECT_EQ(log_.size(), 1U) << "said once";
}

TEST_F(StatusNotifierTest, aWatcherThatDoesNotAnswerHoldsNothingUp) {
  host().startWatcher();
  host().watcher().signal(SIGSTOP);
  const double began = desktop::now();
  startIcon();
  runFor(0.5);
  EXPECT_LT(desktop::now() - began, 5);
  host().watcher().signal(SIGCONT);
  EXPECT_TRUE(host().hasIcon());
}

TEST_F(StatusNotifierTest, wakesNobodyWhileNothingHappens) {
  start();
  if (HasFatalFailure()) return;
  runFor(1);
  int wakeUps = 0;
  QObject counter;
  QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, &counter,
                   [&] { ++wakeUps; });
  QTimer::singleShot(3000, &counter, [] { QApplication::exit(); });
  QApplication::exec();
  EXPECT_LE(wakeUps, 4) << "the end of the wait, and no more";
}

}  // namespace
}  // namespace veloria::tests
