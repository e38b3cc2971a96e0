#include "system/LoginItem.h"

#include <gtest/gtest.h>

#include "SystemFakes.h"

namespace veloria {
namespace {

TEST(LoginItemTest, ReturnsAFailureAndTellsTheSystemLog) {
  FakeLogin port;
  LoginItem item(port);
  EXPECT_TRUE(item.set(true));
  EXPECT_TRUE(item.isEnabled());
  EXPECT_TRUE(item.set(false));
  EXPECT_FALSE(item.isEnabled());

  port.works = false;
  testing::internal::CaptureStderr();
  EXPECT_EQ(item.set(true).error(), "/autostart: No space left on device");
  EXPECT_FALSE(item.isEnabled());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Veloria: login item change failed: /autostart: No space left on device\n");
}

}  // namespace
}  // namespace veloria
