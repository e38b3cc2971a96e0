// The status icon in the system tray of a real panel on an X server.

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <string>

#include "TrayFixture.h"

namespace veloria::tests {
namespace {

class X11TrayTest : public TrayTest {
 protected:
  static void SetUpTestSuite() { startOnX11(); }

  void SetUp() override {
    TrayTest::SetUp();
    if (IsSkipped()) return;
    if (const auto missing = desktop::DesktopSession::missing({"openbox", "tint2"}); !missing.empty()) {
      GTEST_SKIP() << missing;
    }
    desktop().startWindowManager("openbox");
  }

  void TearDown() override {
    if (IsSkipped()) return;
    TrayTest::TearDown();
    panel_.reset();
    desktop().stopWindowManager();
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
    const auto place = icon_->place();
    if (!place) return 0;
    const auto shot = desktop().screenshot();
    int bright = 0;
    for (int y = 0; y < static_cast<int>(place->height); ++y) {
      for (int x = 0; x < static_cast<int>(place->width); ++x) {
        bright += shot.at(static_cast<int>(place->x) + x, static_cast<int>(place->y) + y).green > 180 ? 1 : 0;
      }
    }
    return bright;
  }

  void click(const std::string& button) {
    const Rect place = icon_->place().value_or(Rect{});
    desktop().runToEnd({"xdotool", "mousemove", std::to_string(static_cast<int>(place.x + place.width / 2)),
                        std::to_string(static_cast<int>(place.y + place.height / 2)), "click", button});
  }

  std::unique_ptr<desktop::ChildProcess> panel_;
};

TEST_F(X11TrayTest, aLeftClickOpensAndClosesAndARightClickShowsTheMenu) {
  startIcon();
  ASSERT_TRUE(waitFor([&] { return !log_.empty(); })) << "there is no panel yet";
  startPanel();
  ASSERT_TRUE(isShown()) << panel_->output();

  click("1");
  EXPECT_TRUE(waitFor([&] { return presenter_.shown; }));
  ASSERT_TRUE(presenter_.place);
  EXPECT_EQ(*presenter_.place, *icon_->place());
  runFor(1);  // not a double click
  click("1");
  EXPECT_TRUE(waitFor([&] { return !presenter_.shown; }));
  runFor(1);

  click("3");
  EXPECT_TRUE(waitFor([&] { return menuIsOpen(); }));
  EXPECT_FALSE(presenter_.shown);
  closeMenu();
  click("2");
  runFor(0.5);
  EXPECT_FALSE(presenter_.shown);

  desktop().runToEnd({"xdotool", "keydown", "Control_L"});
  click("1");
  EXPECT_TRUE(waitFor([&] { return menuIsOpen(); })) << "a left click with the control key";
  desktop().runToEnd({"xdotool", "keyup", "Control_L"});
  EXPECT_FALSE(presenter_.shown);
  closeMenu();
  EXPECT_EQ(log_.size(), 1U);
}

TEST_F(X11TrayTest, theMenuCanBeUsedWithTheKeyboard) {
  startPanel();
  startIcon();
  ASSERT_TRUE(isShown()) << panel_->output();
  click("3");
  ASSERT_TRUE(waitFor([&] { return menuIsOpen(); }));
  desktop().runToEnd({"xdotool", "key", "Down", "key", "Return"});
  EXPECT_TRUE(waitFor([&] { return !config().enabled; })) << "the first line that can be chosen";
  EXPECT_TRUE(waitFor([&] { return !menuIsOpen(); }));
}

TEST_F(X11TrayTest, itComesBackWithThePanel) {
  startPanel();
  startIcon();
  ASSERT_TRUE(isShown()) << panel_->output();
  panel_.reset();
  EXPECT_TRUE(waitFor([&] { return brightPixels() == 0; }));
  startPanel();
  EXPECT_TRUE(isShown()) << panel_->output();
  click("1");
  EXPECT_TRUE(waitFor([&] { return presenter_.shown; }));
}

}  // namespace
}  // namespace veloria::tests
