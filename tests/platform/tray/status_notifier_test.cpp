#include <csignal>

#include "TrayFixture.h"

namespace veloria::tests {
namespace {

const QString portal = "org.freedesktop.portal.Desktop";
const QString portalPath = "/org/freedesktop/portal/desktop";
const QString portalSettings = "org.freedesktop.portal.Settings";

class StatusNotifierTest : public TrayTest {
 protected:
  void SetUp() override {
    TrayTest::SetUp();
    model_ = {{.title = "Title", .enabled = false},
              {.title = "", .separator = true},
              {.title = "Pause & go"},
              {.title = "Looks", .submenu = {{.title = "One", .checked = true}, {.title = "Two", .checked = false}}}};
  }

  void start() {
    startWatcher();
    startIcon();
    ASSERT_TRUE(hasIcon());
  }
};

TEST_F(StatusNotifierTest, TheMenuFollowsTheModel) {
  ASSERT_NO_FATAL_FAILURE(start());
  EXPECT_EQ(menu().text(), "Title disabled;---;Pause _& go;Looks (One [x];Two [ ];);");
  for (const char* label : {"Pause _& go", "Two", "One"}) EXPECT_TRUE(choose(label)) << label;
  EXPECT_TRUE(waitFor([&] { return chosen_ == "Pause & goTwoOne"; })) << chosen_;
  model_[0] = {.title = "Resume", .checked = true};
  model_[2].submenu = std::exchange(model_[3].submenu, {});
  model_[2].submenu[0].enabled = false;
  icon_->setMenu(model_);
  EXPECT_EQ(menu().text(), "Resume [x];---;Pause _& go (One [x] disabled;Two [ ];);Looks;");
  icon_->setHandlers({.clicked = {}, .chosen = [this](const auto&) { icon_->setMenu({{.title = "New"}}); }});
  EXPECT_TRUE(choose("Resume"));
  EXPECT_TRUE(waitFor([&] { return menu().text() == "New;"; })) << "set by the handler";
}

TEST_F(StatusNotifierTest, TheIconStandsOutFromTheLikelyPanel) {
  ASSERT_NO_FATAL_FAILURE(start());
  EXPECT_GT(brightness(), 180) << "light, while nothing is known of the panel";
  serve(portal, {portal.toStdString(), portalPath.toStdString(), portalSettings.toStdString()});
  for (const auto& [value, light] : {std::pair<QString, bool>{"dbus.UInt32(2)", false},
                                     {"dbus.UInt32(1)", true},
                                     {"dbus.UInt32(2)", false},
                                     {"'nonsense'", true}}) {
    const QString answer =
        "ret = {'org.freedesktop.appearance': dbus.Dictionary({'color-scheme': " + value + "}, signature='sv')}";
    bus().mock(portal, portalPath, "AddMethod", {portalSettings, "ReadAll", "as", "a{sa{sv}}", answer});
    bus().sendSignal(portal, portalPath, portalSettings, "SettingChanged", "ssv",
                     {"org.freedesktop.appearance", "color-scheme", QVariant::fromValue(QDBusVariant(1U))});
    EXPECT_TRUE(waitFor([&, isLight = light] { return isLight ? brightness() > 180 : brightness() < 80; }))
        << value.toStdString();
  }
}

TEST_F(StatusNotifierTest, ReportsClicksWithTheirPlace) {
  ASSERT_NO_FATAL_FAILURE(start());
  EXPECT_EQ(icon_->place(), std::nullopt);
  desktop().runToEnd({"xdotool", "mousemove", "300", "200"});
  click("Activate");
  EXPECT_EQ(icon_->place(), (Rect{300, 200, 1, 1})) << "the pointer's place";
  click("ContextMenu");
  EXPECT_TRUE(menuIsOpen());
  closeMenu();
  click("SecondaryActivate");  // the middle button
  EXPECT_EQ(clicks_, "ps");
}

TEST_F(StatusNotifierTest, AHostMayComeLateAndRestart) {
  startIcon();
  ASSERT_TRUE(waitFor([&] { return !log_.empty(); })) << "there is no tray yet";
  startWatcher();
  EXPECT_TRUE(hasIcon());
  startWatcher();
  EXPECT_TRUE(hasIcon()) << "the panel started again";
}

TEST_F(StatusNotifierTest, AWatcherThatDoesNotAnswerBlocksNothing) {
  startWatcher();
  services_[watcherName]->signal(SIGSTOP);
  const double began = now();
  startIcon();
  runFor(0.5);
  EXPECT_LT(now() - began, 5);
  services_[watcherName]->signal(SIGCONT);
  EXPECT_TRUE(hasIcon());
}

}  // namespace
}  // namespace veloria::tests
