#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <vector>

#include "gpu/vulkan/VulkanHazards.h"
#include "gpu/vulkan/VulkanSurface.h"
#include "gpu/vulkan/VulkanSwapchain.h"

namespace veloria::tests {

namespace {

using namespace gpu;
using namespace gpu::vulkan;

constexpr VkSurfaceFormatKHR bgra{VK_FORMAT_B8G8R8A8_UNORM, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR};
constexpr VkSurfaceFormatKHR rgba{VK_FORMAT_R8G8B8A8_UNORM, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR};
constexpr VkSurfaceFormatKHR bgraSrgb{VK_FORMAT_B8G8R8A8_SRGB, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR};
constexpr VkSurfaceFormatKHR linear{VK_FORMAT_R16G16B16A16_SFLOAT, VK_COLOR_SPACE_EXTENDED_SRGB_LINEAR_EXT};
constexpr VkSurfaceFormatKHR linearP3{VK_FORMAT_R16G16B16A16_SFLOAT, VK_COLOR_SPACE_DISPLAY_P3_LINEAR_EXT};
constexpr VkSurfaceFormatKHR floatPlain{VK_FORMAT_R16G16B16A16_SFLOAT, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR};

TEST(SurfaceChoice, Format) {
  const struct {
    std::vector<VkSurfaceFormatKHR> offered;
    PixelFormat wanted;
    std::optional<VkSurfaceFormatKHR> chosen;
    bool extendedAllowed = true;
  } cases[] = {{{bgraSrgb, rgba, bgra}, PixelFormat::bgra8Unorm, bgra},
               {{bgraSrgb, rgba}, PixelFormat::bgra8Unorm, rgba},
               {{bgraSrgb}, PixelFormat::bgra8Unorm, {}},
               {{}, PixelFormat::rgba16Float, {}},
               {{bgra, linearP3, linear}, PixelFormat::rgba16Float, linear},
               {{bgra, linearP3}, PixelFormat::rgba16Float, linearP3},
               {{bgra, linear}, PixelFormat::rgba16Float, bgra, false},
               {{floatPlain, bgra}, PixelFormat::rgba16Float, bgra},
               {{linear, bgra}, PixelFormat::bgra8Unorm, bgra}};
  for (const auto& c : cases) {
    const auto chosen = chooseSurfaceFormat(c.offered, c.wanted, c.extendedAllowed);
    ASSERT_EQ(chosen.has_value(), c.chosen.has_value()) << &c - cases;
    if (!chosen) continue;
    EXPECT_EQ(chosen->format, c.chosen->format) << &c - cases;
    EXPECT_EQ(chosen->colorSpace, c.chosen->colorSpace) << &c - cases;
  }
}

TEST(SurfaceChoice, AlphaModeAndImageCount) {
  constexpr auto opaque = VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR;
  constexpr auto inherit = VK_COMPOSITE_ALPHA_INHERIT_BIT_KHR;
  constexpr auto after = VK_COMPOSITE_ALPHA_POST_MULTIPLIED_BIT_KHR;
  EXPECT_EQ(chooseCompositeAlpha(15), VK_COMPOSITE_ALPHA_PRE_MULTIPLIED_BIT_KHR);
  EXPECT_EQ(chooseCompositeAlpha(opaque | inherit), inherit);
  EXPECT_EQ(chooseCompositeAlpha(opaque | after), opaque);
  EXPECT_EQ(chooseCompositeAlpha(after), after);

  const std::array all{VK_PRESENT_MODE_IMMEDIATE_KHR, VK_PRESENT_MODE_FIFO_KHR, VK_PRESENT_MODE_MAILBOX_KHR};
  EXPECT_EQ(choosePresentMode(all), VK_PRESENT_MODE_MAILBOX_KHR);
  EXPECT_EQ(choosePresentMode(std::span(all).first(2)), VK_PRESENT_MODE_FIFO_KHR);
  EXPECT_EQ(choosePresentMode({}), VK_PRESENT_MODE_FIFO_KHR);

  for (const auto& [least, most, chosen] :
       std::vector<std::array<std::uint32_t, 3>>{{1, 0, 3}, {2, 2, 2}, {4, 8, 4}, {1, 3, 3}}) {
    VkSurfaceCapabilitiesKHR capabilities{};
    capabilities.minImageCount = least;
    capabilities.maxImageCount = most;
    EXPECT_EQ(chooseImageCount(capabilities), chosen) << least << " to " << most;
  }
}

TEST(SurfaceChoice, Extent) {
  VkSurfaceCapabilitiesKHR capabilities{};
  capabilities.currentExtent = {640, 32};
  EXPECT_EQ(chooseExtent(capabilities, {100, 100}), (Size{640, 32}));
  capabilities.currentExtent = {UINT32_MAX, UINT32_MAX};
  capabilities.minImageExtent = {16, 16};
  capabilities.maxImageExtent = {4096, 4096};
  EXPECT_EQ(chooseExtent(capabilities, {1920, 32}), (Size{1920, 32}));
  EXPECT_EQ(chooseExtent(capabilities, {9000, 2}), (Size{4096, 16}));
  EXPECT_EQ(chooseExtent(capabilities, {0, 32}), (Size{0, 32}));
}

TEST(RetryPause, GrowsToOneSecondAndStartsOver) {
  RetryPause pause;
  RetryPause::Clock::time_point now{std::chrono::hours(1)};
  EXPECT_TRUE(pause.over(now));
  int tries = 0;
  for (int millisecond = 0; millisecond < 20000; ++millisecond, now += std::chrono::milliseconds(1)) {
    if (!pause.over(now)) continue;
    pause.failed(now);
    ++tries;
  }
  EXPECT_GE(tries, 20) << "at least once a second";
  EXPECT_LE(tries, 26) << "little more often than that";
  pause.succeeded();
  EXPECT_TRUE(pause.over(now));
}

// One pass that reads and writes textures; returns its barrier.
PassBarrier pass(VulkanHazards& hazards, std::uint64_t number,
                 std::vector<std::pair<TextureAccesses*, Access>> accesses) {
  hazards.beginPass(number);
  for (const auto& [texture, access] : accesses) hazards.touch(*texture, access);
  const PassBarrier barrier = hazards.endPass();
  for (const auto& [texture, access] : accesses) hazards.note(*texture, access);
  return barrier;
}

TEST(VulkanHazards, BarriersAreWhereTheyAreNeededAndNowhereElse) {
  using enum Access;
  VulkanHazards hazards;
  TextureAccesses a, b, c;
  EXPECT_FALSE(pass(hazards, 1, {{&a, computeWrite}}).needed()) << "nothing before it";
  EXPECT_FALSE(pass(hazards, 2, {{&b, computeWrite}}).needed()) << "another texture";
  const PassBarrier readAfterWrite = pass(hazards, 3, {{&a, computeRead}, {&c, computeWrite}});
  EXPECT_EQ(readAfterWrite.sourceAccess, VK_ACCESS_SHADER_WRITE_BIT);
  EXPECT_EQ(readAfterWrite.targetAccess, VK_ACCESS_SHADER_READ_BIT);
  EXPECT_FALSE(pass(hazards, 4, {{&b, computeRead}}).needed()) << "the barrier of 3 covered what 2 wrote";
  EXPECT_FALSE(pass(hazards, 5, {{&a, computeRead}}).needed()) << "reading again";
  const PassBarrier writeAfterRead = pass(hazards, 6, {{&a, computeWrite}});
  EXPECT_TRUE(writeAfterRead.needed());
  const PassBarrier drawn = pass(hazards, 7, {{&a, fragmentRead}, {&b, colorWrite}});
  EXPECT_EQ(drawn.targetStages, VkPipelineStageFlags{VK_PIPELINE_STAGE_FRAGMENT_SHADER_BIT |
                                                     VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT});
  EXPECT_EQ(drawn.sourceStages, VkPipelineStageFlags{VK_PIPELINE_STAGE_COMPUTE_SHADER_BIT});
  EXPECT_TRUE(pass(hazards, 8, {{&b, colorWrite}}).needed()) << "two passes on one target";
  EXPECT_EQ(pass(hazards, 9, {{&b, computeRead}}).sourceStages,
            VkPipelineStageFlags{VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT});
  EXPECT_TRUE(pass(hazards, 10, {{&a, computeRead}, {&a, computeWrite}}).needed());
  EXPECT_TRUE(pass(hazards, 11, {{&a, computeRead}, {&a, computeWrite}}).needed()) << "in place, again";
}

}  // namespace

}  // namespace veloria::tests
