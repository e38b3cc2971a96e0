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

TEST(LoginItemTest, TellsOfAFailureInTheSystemLogOnly) {
  FakeLogin port;
  LoginItem item(port);
  testing::internal::CaptureStderr();
  item.set(true);
  EXPECT_TRUE(item.isEnabled());
  item.set(false);
  EXPECT_FALSE(item.isEnabled());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

  port.works = false;
  testing::internal::CaptureStderr();
  item.set(true);
  EXPECT_FALSE(item.isEnabled());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Veloria: login item change failed: /autostart: No space left on device\n");
}

}  // namespace
}  // namespace veloria
