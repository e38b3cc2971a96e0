#include "platform/linux/pulse/Deinterleave.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

namespace veloria {
namespace {

using testing::ElementsAre;

TEST(Deinterleave, takesPairsApartFromAnyAddressAndLeavesTheRestAlone) {
  const std::array<float, 7> samples{1, -1, 2, -2, 3, -3, 4};
  for (std::size_t offset = 0; offset < 4; ++offset) {
    std::vector<std::byte> bytes(offset + sizeof samples);
    std::memcpy(bytes.data() + offset, samples.data(), sizeof samples);
    std::array<float, 4> left{9, 9, 9, 9};
    std::array<float, 4> right{9, 9, 9, 9};
    EXPECT_EQ(deinterleave(std::span(bytes).subspan(offset), left, right), 3U);
    EXPECT_THAT(left, ElementsAre(1, 2, 3, 9));
    EXPECT_THAT(right, ElementsAre(-1, -2, -3, 9));
  }
}

TEST(Deinterleave, writesNoMoreThanFits) {
  const std::vector<std::byte> bytes(1000);
  std::array<float, 8> left{};
  std::array<float, 5> right{};
  EXPECT_EQ(deinterleave(bytes, left, right), 5U);
  EXPECT_EQ(deinterleave(std::span(bytes).first(7), left, right), 0U);
  EXPECT_EQ(deinterleave({}, left, right), 0U);
}

}  // namespace
}  // namespace veloria
