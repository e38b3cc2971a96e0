// The status icon on a Wayland desktop: only by the status notifiers' protocol, and without knowing where the pointer
// is.

#include <gtest/gtest.h>

#include <memory>

#include "StatusHost.h"
#include "TrayFixture.h"

namespace veloria::tests {
namespace {

class WaylandTrayTest : public TrayTest {
 protected:
  static void SetUpTestSuite() { startOnWayland(); }
};

TEST_F(WaylandTrayTest, aHostThatComesLaterShowsTheIconAndAClickOpensTheSettings) {
  StatusHost host(bus(), [](const auto& condition) { return waitFor(condition); });
  startIcon();
  ASSERT_TRUE(waitFor([&] { return !log_.empty(); })) << "there is no tray yet";
  host.startWatcher();
  ASSERT_TRUE(host.hasIcon());

  host.click("Activate");
  EXPECT_TRUE(presenter_.shown);
  EXPECT_FALSE(presenter_.place) << "nobody knows it";
  host.click("ContextMenu");
  EXPECT_TRUE(presenter_.shown);
  EXPECT_FALSE(menuIsOpen()) << "the host's affair";
  host.click("Activate");
  EXPECT_FALSE(presenter_.shown);

  EXPECT_FALSE(host.menu().children.empty());
  EXPECT_TRUE(host.choose("Pause Nimbra"));
  EXPECT_TRUE(waitFor([&] { return !config().enabled; }));
}

}  // namespace
}  // namespace veloria::tests
