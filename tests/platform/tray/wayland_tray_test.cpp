// The status icon on a Wayland desktop: by the status notifiers' protocol only, without the pointer's place.

#include "TrayFixture.h"

namespace veloria::tests {
namespace {

struct WaylandTrayTest : TrayTest {
  static void SetUpTestSuite() { startOnWayland(); }
};

TEST_F(WaylandTrayTest, ALateHostShowsTheIconAndReportsClicks) {
  model_ = {{.title = "Pause"}};
  startIcon();
  ASSERT_TRUE(waitFor([&] { return !log_.empty(); })) << "there is no tray yet";
  startWatcher();
  ASSERT_TRUE(hasIcon());
  for (const char* method : {"Activate", "ContextMenu", "Activate"}) click(method);
  EXPECT_EQ(clicks_, "psp");
  EXPECT_EQ(icon_->place(), std::nullopt);
  EXPECT_FALSE(menuIsOpen()) << "the host opens it";
  EXPECT_TRUE(choose("Pause"));
  EXPECT_TRUE(waitFor([&] { return chosen_ == "Pause"; }));
}

}  // namespace
}  // namespace veloria::tests
