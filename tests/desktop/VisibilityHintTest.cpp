#include "X11Fixture.h"

namespace veloria::desktop {
namespace {

class VisibilityHint : public X11Test {
 protected:
  void start(const std::vector<std::string>& programs) {
    startDesktop(programs);
    if (IsSkipped()) return;
    desktop().startWindowManager("openbox");
    connect();
  }

  std::string hint(OverlayLevel level = OverlayLevel::desktop) {
    return factory_->visibilityHint(screens_->screens().at(0), level);
  }

  bool saysHidden() { return hint().find("opaque and hides") != std::string::npos; }
};

TEST_F(VisibilityHint, withoutAPanelThereIsNone) {
  start({"openbox"});
  if (IsSkipped()) return;
  const auto band = showBand(OverlayLevel::aboveMenuBar);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
  EXPECT_EQ(hint(), "") << "our own window is no panel";
}

TEST_F(VisibilityHint, anOpaquePanelHidesTheLightWithAndWithoutACompositor) {
  start({"openbox", "tint2", "picom"});
  if (IsSkipped()) return;
  desktop().startPanel(32);
  ASSERT_TRUE(waitUntil([&] { return screens_->screens()[0].visibleFrame.maxY() == 1080 - 32; }));
  EXPECT_TRUE(saysHidden()) << hint();
  EXPECT_NE(hint().find("start veloria again"), std::string::npos);
  EXPECT_EQ(hint(OverlayLevel::aboveMenuBar), "");

  desktop().startCompositor();
  desktop().startPanel(32);
  ASSERT_TRUE(waitUntil([&] { return connection_->compositorRunning(); }));
  EXPECT_TRUE(waitUntil([&] { return saysHidden(); })) << hint();
}

TEST_F(VisibilityHint, aTranslucentPanelIsSeenThroughOnlyWhileACompositorRuns) {
  start({"openbox", "picom"});
  if (IsSkipped()) return;
  openDock(32, 0.5);
  ASSERT_TRUE(waitUntil([&] { return screens_->screens()[0].visibleFrame.maxY() == 1080 - 32; }));
  EXPECT_TRUE(saysHidden());
  desktop().startCompositor();
  EXPECT_TRUE(waitUntil([&] { return hint().empty(); })) << hint();
  const auto band = showBand(OverlayLevel::desktop);
  ASSERT_TRUE(waitUntil([&] {
    const Pixel pixel = desktop().screenshot().at(960, 16);
    return pixel.green > pixel.red + 40;
  })) << "the band does not shine through a translucent panel";
  desktop().stopCompositor();
  EXPECT_TRUE(waitUntil([&] { return saysHidden(); }));
}

TEST_F(VisibilityHint, anOpaqueWindowMadeTranslucentByItsOpacityIsSeenThrough) {
  start({"openbox", "picom"});
  if (IsSkipped()) return;
  desktop().startCompositor();
  const xcb_window_t dock = openDock(32);
  ASSERT_TRUE(waitUntil([&] { return saysHidden(); }));
  setNumbers(dock, "_NET_WM_WINDOW_OPACITY", XCB_ATOM_CARDINAL, {0x80000000U});
  EXPECT_TRUE(waitUntil([&] { return hint().empty(); }));
}

}  // namespace
}  // namespace veloria::desktop
