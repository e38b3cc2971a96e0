// The status icon as a panel that hosts status notifiers gets it, over a real bus.

#include <csignal>

#include "TrayFixture.h"

namespace veloria::tests {
namespace {

const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString portalSettings = QStringLiteral("org.freedesktop.portal.Settings");

class StatusNotifierTest : public TrayTest {
 protected:
  static void SetUpTestSuite() { startOnX11(); }

  void SetUp() override {
    TrayTest::SetUp();
    model_ = {
        {.title = "Title", .enabled = false},
        {.title = "", .separator = true},
        {.title = "Pause & go", .keyEquivalent = ","},
        {.title = "Looks",
         .submenu = {{.title = "One", .checked = true}, {.title = "Two", .checked = false, .keyEquivalent = "Q"}}}};
  }

  void start() {
    startWatcher();
    startIcon();
    ASSERT_TRUE(hasIcon());
  }
};

TEST_F(StatusNotifierTest, TheHostGetsIconAndToolTip) {
  ASSERT_NO_FATAL_FAILURE(start());
  EXPECT_TRUE(log_.empty());
  EXPECT_EQ(property("Status"), "Active");
  EXPECT_EQ(property("Category"), "ApplicationStatus");
  EXPECT_FALSE(property("ItemIsMenu").toBool()) << "a plain click is ours";
  const auto toolTip = qvariant_cast<QDBusArgument>(property("ToolTip"));
  QString iconName, title;
  toolTip.beginStructure();
  toolTip >> iconName;
  for (toolTip.beginArray(); !toolTip.atEnd();) toolTip.asVariant();
  toolTip.endArray();
  toolTip >> title;
  EXPECT_EQ(title, "Veloria — click for settings");
}

TEST_F(StatusNotifierTest, TheMenuFollowsTheModel) {
  ASSERT_NO_FATAL_FAILURE(start());
  EXPECT_EQ(menu().text(), "Title disabled;---;Pause _& go Control+,;Looks (One [x];Two [ ] Control+Q;);");
  for (const char* label : {"Pause _& go", "Two", "One"}) EXPECT_TRUE(choose(label)) << label;
  EXPECT_TRUE(waitFor([&] { return chosen_ == "Pause & goTwoOne"; })) << chosen_;
  EXPECT_TRUE(menu().text().find("One [x];Two [ ]") != std::string::npos) << "a choice alone changes no mark";
  model_[0] = {.title = "Resume", .checked = true};
  model_[2].submenu = std::exchange(model_[3].submenu, {});
  model_[2].submenu[0].enabled = false;
  icon_->setMenu(model_);
  EXPECT_EQ(menu().text(), "Resume [x];---;Pause _& go Control+, (One [x] disabled;Two [ ] Control+Q;);Looks;");
  model_.resize(1);
  icon_->setMenu(model_);
  EXPECT_EQ(menu().text(), "Resume [x];");
  icon_->setHandlers(
      {.clicked = {}, .chosen = [this](const auto&) { model_[0].title += "!", icon_->setMenu(model_); }});
  EXPECT_TRUE(choose("Resume"));
  EXPECT_TRUE(waitFor([&] { return menu().text() == "Resume! [x];"; })) << "set by the handler";
}

TEST_F(StatusNotifierTest, TheIconStandsOutFromTheLikelyPanel) {
  const auto turns = [&](bool light) {
    return waitFor([&] { return light ? pictures().at(0).brightness() > 180 : pictures().at(0).brightness() < 80; });
  };
  ASSERT_NO_FATAL_FAILURE(start());
  ASSERT_FALSE(pictures().empty());
  for (const IconPicture& picture : pictures()) {
    EXPECT_EQ(picture.width, picture.height);
    EXPECT_EQ(picture.pixels.size(), 4 * picture.width * picture.height);
    EXPECT_GT(picture.brightness(), 180) << picture.width << ": light, while nothing is known of the panel";
  }
  serve(portal, {portal.toStdString(), portalPath.toStdString(), portalSettings.toStdString()});
  const auto prefer = [&](const QString& value, const QString& space = "org.freedesktop.appearance") {
    const QString answer =
        "ret = {'org.freedesktop.appearance': dbus.Dictionary({'color-scheme': " + value + "}, signature='sv')}";
    bus().mock(portal, portalPath, "AddMethod", {portalSettings, "ReadAll", "as", "a{sa{sv}}", answer});
    bus().sendSignal(portal, portalPath, portalSettings, "SettingChanged", "ssv",
                     {space, "color-scheme", QVariant::fromValue(QDBusVariant(1U))});
  };
  for (const auto& [value, light] : {std::pair{"dbus.UInt32(2)", false},
                                     {"dbus.UInt32(1)", true},
                                     {"dbus.UInt32(2)", false},
                                     {"'nonsense'", true},
                                     {"dbus.UInt32(2)", false},
                                     {"dbus.Int32(2)", true},
                                     {"dbus.UInt32(2)", false}}) {
    prefer(value);
    EXPECT_TRUE(turns(light)) << value;
  }
  prefer("dbus.UInt32(1)", "org.example.other");
  runFor(0.3);
  EXPECT_TRUE(turns(false)) << "another setting of the same name";
}

TEST_F(StatusNotifierTest, ReportsClicksWithPlaceAndKeys) {
  ASSERT_NO_FATAL_FAILURE(start());
  EXPECT_EQ(icon_->place(), std::nullopt);
  desktop().runToEnd({"xdotool", "mousemove", "300", "200"});
  click("Activate");
  EXPECT_EQ(icon_->place(), (Rect{300, 200, 1, 1})) << "the pointer's place";
  EXPECT_FALSE(menuIsOpen());
  click("ContextMenu");
  EXPECT_TRUE(menuIsOpen());
  closeMenu();
  click("SecondaryActivate");  // the middle button
  desktop().runToEnd({"xdotool", "keydown", "Control_L"});
  click("Activate");
  desktop().runToEnd({"xdotool", "keyup", "Control_L"});
  EXPECT_TRUE(menuIsOpen());
  closeMenu();
  click("Activate");
  EXPECT_EQ(clicks_, "psPp");
}

TEST_F(StatusNotifierTest, AHostMayComeLateAndRestart) {
  startIcon();
  ASSERT_TRUE(waitFor([&] { return !log_.empty(); }));
  EXPECT_NE(log_.front().find("run veloria again"), std::string::npos);
  startWatcher(false);
  runFor(0.5);
  EXPECT_TRUE(registrations().empty()) << "nobody shows it";
  bus().setProperty(watcherName, watcherPath, watcherName, "IsStatusNotifierHostRegistered", true);
  bus().sendSignal(watcherName, watcherPath, watcherName, "StatusNotifierHostRegistered", "", {});
  EXPECT_TRUE(hasIcon());
  startWatcher();
  EXPECT_TRUE(hasIcon()) << "the panel started again";
  EXPECT_EQ(log_.size(), 1U) << "said once";
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
