// The status icon in the system tray of a real panel on an X server.

#include "TrayFixture.h"

namespace veloria::tests {
namespace {

class X11TrayTest : public TrayTest {
 protected:
  static void SetUpTestSuite() { startOnX11(); }

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

  /// Waits until the icon has settled in the panel.
  bool isShown() {
    return waitFor([&] {
      const auto place = icon_->place();
      return place && place->width > 8 && place->y < 32 && brightPixels() > 10;
    });
  }

  /// Pixels of the icon's place that are far brighter than the panel.
  int brightPixels() {
    const Rect place = icon_->place().value_or(Rect{});
    const auto shot = desktop().screenshot();
    int bright = 0;
    for (int y = 0; y < static_cast<int>(place.height); ++y) {
      for (int x = 0; x < static_cast<int>(place.width); ++x) {
        bright += shot.at(static_cast<int>(place.x) + x, static_cast<int>(place.y) + y).green > 180 ? 1 : 0;
      }
    }
    return bright;
  }

  void click(const std::string& button) {
    const Rect place = icon_->place().value_or(Rect{});
    desktop().runToEnd({"xdotool", "mousemove", std::to_string(static_cast<int>(place.x + place.width / 2)),
                        std::to_string(static_cast<int>(place.y + place.height / 2)), "click", button});
  }

  bool clicksBecome(const std::string& expected) {
    return waitFor([&] { return clicks_ == expected; });
  }

  std::unique_ptr<ChildProcess> panel_;
};

TEST_F(X11TrayTest, ReportsClicksAndShowsTheMenuAlsoInAPanelThatComesBack) {
  startIcon();
  ASSERT_TRUE(waitFor([&] { return !log_.empty(); })) << "there is no panel yet";
  startPanel();
  ASSERT_TRUE(isShown()) << panel_->output();
  click("1");
  EXPECT_TRUE(clicksBecome("p"));
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
  EXPECT_TRUE(clicksBecome("psP"));
  panel_.reset();
  EXPECT_TRUE(waitFor([&] { return brightPixels() == 0; }));
  startPanel();
  EXPECT_TRUE(isShown()) << panel_->output();
  runFor(0.6);  // not a double click
  click("1");
  EXPECT_TRUE(clicksBecome("psPp")) << clicks_;
  EXPECT_EQ(log_.size(), 1U);
}

}  // namespace
}  // namespace veloria::tests
