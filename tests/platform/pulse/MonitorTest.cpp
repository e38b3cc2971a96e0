#include "platform/linux/pulse/Monitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>

namespace veloria {
namespace {

constexpr std::uint32_t noIndex = 0xFFFFFFFF;

TEST(Monitor, isTheOneThatTheOutputNames) {
  const auto monitor = monitorOf({.description = "Speakers", .monitorIndex = 7, .monitorName = "speakers.monitor"});
  ASSERT_TRUE(monitor);
  EXPECT_EQ(monitor->index, 7U);
  EXPECT_EQ(monitor->name, "speakers.monitor");
}

TEST(Monitor, thatIsMissingIsNotReplacedByAnythingElse) {
  for (const Output& output : {Output{"Speakers", noIndex, "microphone"}, Output{"Speakers", 7, ""}}) {
    const auto monitor = monitorOf(output);
    ASSERT_FALSE(monitor);
    EXPECT_THAT(monitor.error(), testing::HasSubstr("\"Speakers\" has no monitor"));
  }
}

}  // namespace
}  // namespace veloria
