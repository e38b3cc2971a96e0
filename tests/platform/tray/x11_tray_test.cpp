#include "TrayFixture.h"

namespace veloria::tests {
namespace {

class X11TrayTest : public TrayTest {
 protected:
  void SetUp() override {
    TrayTest::SetUp();
    model_ = {{.title = "Title", .enabled = false}, {.title = "Pause"}};
    if (!IsSkipped()) desktop().startWindowManager("openbox");
  }

  void TearDown() override {
    TrayTest::TearDown();
    panel_.reset();
    if (!IsSkipped()) desktop().stopWindowManager();
  }

  void startPanel() { panel_ = desktop().run({"tint2", "-c", VELORIA_TEST_DATA "/tint2rc"}); }

  void click(const std::string& button) {
    const Rect place = icon_->place().value_or(Rect{});
    desktop().runToEnd({"xdotool", "mousemove", std::to_string(static_cast<int>(place.x + place.width / 2)),
                        std::to_string(static_cast<int>(place.y + place.height / 2)), "click", button});
  }

  /// Clicks until the icon, which may still be settling in the panel, reports it; never twice as fast as a double
  /// click.
  bool reportsClicks() {
    clicks_.clear();
    return waitFor([&] {
      click("1");
      runFor(0.6);
      return !clicks_.empty();
    });
  }

  std::unique_ptr<ChildProcess> panel_;
};

TEST_F(X11TrayTest, ReportsClicksAndShowsTheMenuAlsoInAPanelThatComesBack) {
  startIcon();
  ASSERT_TRUE(waitFor([&] { return !log_.empty(); })) << "there is no panel yet";
  startPanel();
  ASSERT_TRUE(reportsClicks()) << panel_->output();
  EXPECT_LT(icon_->place().value_or(Rect{}).y, 32);
  clicks_.clear();
  click("2");
  click("3");
  EXPECT_TRUE(waitFor([] { return menuIsOpen(); }));
  desktop().runToEnd({"xdotool", "key", "Down", "key", "Return"});
  EXPECT_TRUE(waitFor([&] { return chosen_ == "Pause"; })) << "the first line that can be chosen";
  EXPECT_TRUE(waitFor([] { return !menuIsOpen(); }));
  desktop().runToEnd({"xdotool", "keydown", "Control_L"});
  click("1");
  EXPECT_TRUE(waitFor([] { return menuIsOpen(); })) << "a left click with the control key";
  desktop().runToEnd({"xdotool", "keyup", "Control_L"});
  closeMenu();
  EXPECT_EQ(clicks_, "sP");
  panel_.reset();
  startPanel();
  EXPECT_TRUE(reportsClicks()) << panel_->output();
}

}  // namespace
}  // namespace veloria::tests
