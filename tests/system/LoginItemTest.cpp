#include "system/LoginItem.h"

#include <gtest/gtest.h>

namespace veloria {
namespace {

class FakeLogin final : public LoginItemPort {
 public:
  bool isRegistered() override { return registered; }
  Result<Done> add() override { return change(true); }
  Result<Done> remove() override { return change(false); }

  bool registered = false;
  bool works = true;

 private:
  Result<Done> change(bool value) {
    if (!works) return Failure{"/autostart: No space left on device"};
    registered = value;
    return Done{};
  }
};

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
