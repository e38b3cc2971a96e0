#include "platform/macos/status/StatusClick.h"

#include <gtest/gtest.h>

namespace veloria {
namespace {

constexpr std::uint64_t leftUp = 2, rightUp = 4;
constexpr std::uint64_t shift = 0x20000, control = 0x40000, command = 0x100000;

TEST(StatusClickTest, ByTheEventThatIsHandled) {
  EXPECT_EQ(statusClick({}), (StatusClick{Click::unknown, false}));
  EXPECT_EQ(statusClick(CurrentEvent{leftUp, 0}), (StatusClick{Click::primary, false}));
  EXPECT_EQ(statusClick(CurrentEvent{rightUp, 0}), (StatusClick{Click::secondary, false}));
  EXPECT_EQ(statusClick(CurrentEvent{leftUp, control | shift}), (StatusClick{Click::primary, true}));
  EXPECT_EQ(statusClick(CurrentEvent{leftUp, shift | command}), (StatusClick{Click::primary, false}));
  EXPECT_EQ(statusClick(CurrentEvent{10, control}), (StatusClick{Click::primary, true}));  // a key
}

}  // namespace
}  // namespace veloria
