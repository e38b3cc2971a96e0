// What only Vulkan's back end has: choices, hostile libraries, the loss of the device, the cache of pipelines.

#include <filesystem>
#include <fstream>

#include "GpuTest.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "gpu/vulkan/VulkanHazards.h"
#include "gpu/vulkan/VulkanPipeline.h"
#include "gpu/vulkan/VulkanSwapchain.h"

namespace veloria::tests {

const Backend& backend() {
  return vulkanBackend();
}

namespace {

using namespace gpu;
using namespace gpu::vulkan;

TEST(VulkanFactory, PrefersTheKindsInOrderAndTakesNamesAndIndices) {
  const std::vector<DeviceInfo> devices{{0, "Software Rasteriser", DeviceType::cpu, true},
                                        {1, "Old Discrete", DeviceType::discrete, false},
                                        {2, "Integrated 600", DeviceType::integrated, true},
                                        {3, "Discrete 9000", DeviceType::discrete, true},
                                        {4, "Discrete 9001", DeviceType::discrete, true}};
  for (const auto& [wish, index] : {std::pair{"", 3U}, {"0", 0U}, {"SOFTWARE", 0U}, {"discrete", 3U}}) {
    EXPECT_EQ(chooseDevice(devices, wish), index) << wish;
  }
  EXPECT_THROW(chooseDevice(devices, "quantum"), NoDeviceError);
  EXPECT_THROW(chooseDevice(devices, "1"), NoDeviceError) << "one that can't do what is needed";
  EXPECT_THROW(chooseDevice({}, ""), NoDeviceError);
}

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

TEST(SurfaceChoice, AlphaPresentModeImageCountAndExtent) {
  EXPECT_EQ(chooseCompositeAlpha(15), VK_COMPOSITE_ALPHA_PRE_MULTIPLIED_BIT_KHR);
  EXPECT_EQ(chooseCompositeAlpha(9), VK_COMPOSITE_ALPHA_INHERIT_BIT_KHR);
  EXPECT_EQ(chooseCompositeAlpha(5), VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR);
  EXPECT_EQ(chooseCompositeAlpha(4), VK_COMPOSITE_ALPHA_POST_MULTIPLIED_BIT_KHR);

  const std::array modes{VK_PRESENT_MODE_IMMEDIATE_KHR, VK_PRESENT_MODE_FIFO_KHR, VK_PRESENT_MODE_MAILBOX_KHR};
  EXPECT_EQ(choosePresentMode(modes), VK_PRESENT_MODE_MAILBOX_KHR);
  EXPECT_EQ(choosePresentMode(std::span(modes).first(2)), VK_PRESENT_MODE_FIFO_KHR);

  VkSurfaceCapabilitiesKHR can{};
  for (const auto& [least, most, chosen] :
       std::vector<std::array<std::uint32_t, 3>>{{1, 0, 3}, {2, 2, 2}, {4, 8, 4}, {1, 3, 3}}) {
    can.minImageCount = least;
    can.maxImageCount = most;
    EXPECT_EQ(chooseImageCount(can), chosen) << least << " to " << most;
  }
  can.currentExtent = {640, 32};
  EXPECT_EQ(chooseExtent(can, {100, 100}), (Size{640, 32}));
  can.currentExtent = {UINT32_MAX, UINT32_MAX};
  can.minImageExtent = {16, 16};
  can.maxImageExtent = {4096, 4096};
  EXPECT_EQ(chooseExtent(can, {1920, 32}), (Size{1920, 32}));
  EXPECT_EQ(chooseExtent(can, {9000, 2}), (Size{4096, 16}));
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
  EXPECT_TRUE(pass(hazards, 6, {{&a, computeWrite}}).needed());
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

using VulkanTest = GpuTest;

TEST_F(VulkanTest, HostileLibrariesAreRefused) {
  constexpr std::uint32_t magic = 0x07230203;
  constexpr std::uint32_t version = 0x00010500;
  const std::vector<std::pair<const char*, std::vector<std::uint32_t>>> cases{
      {"empty", {}},
      {"zeros", std::vector<std::uint32_t>(1024)},
      {"too large", std::vector<std::uint32_t>((std::size_t{4} << 20) + 1)},
      {"only the magic number", {magic}},
      {"no function", {magic, version, 0, 10, 0}},
      {"too new", {magic, 0x00010600, 0, 10, 0}},
      {"an instruction of length 0", {magic, version, 0, 10, 0, 0}},
      {"an instruction beyond the end", {magic, version, 0, 10, 0, 15U | 9U << 16, 5, 1}},
      {"a function without a name", {magic, version, 0, 10, 0, 15U | 2U << 16, 5}},
      {"a name without an end", {magic, version, 0, 10, 0, 15U | 4U << 16, 5, 1, 0x6B6B6B6B}},
      {"another stage", {magic, version, 0, 10, 0, 15U | 4U << 16, 77, 1, 0x6B}},
      {"the other byte order", {0x03022307, 0x00000100}}};
  for (const auto& [what, words] : cases) {
    EXPECT_THROW(device_->makeLibrary(std::as_bytes(std::span(words))), DeviceError) << what;
  }
  const std::vector<std::byte> good = backend().libraryBytes();
  for (const std::size_t length : {std::size_t{3}, good.size() - 1, good.size() / 8 * 4}) {
    EXPECT_THROW(device_->makeLibrary(std::span(good).first(length)), DeviceError) << "cut at " << length;
  }
  EXPECT_THROW(computePipeline("f_copy"), DeviceError) << "another stage than wanted";
  EXPECT_THROW(renderPipeline("k_add", PixelFormat::rgba16Float), DeviceError);
}

TEST_F(VulkanTest, ALostDeviceFailsEverything) {
  const auto pipeline = computePipeline("k_slow");
  const auto texture = makeTexture(PixelFormat::r16Float, {64, 64});
  int failed = 0;
  const auto begin = [&] {
    Frame* frame = queue_->begin("frame");
    frame->run({.pipeline = *pipeline, .bytes = floats({5000, 0}), .target = *texture});
    return frame;
  };
  const CompletedHandler handler = [&](const Completion& completion) { failed += completion.failed ? 1 : 0; };
  begin()->commit(handler);
  Frame* open = begin();
  simulateLoss(*device_);
  EXPECT_TRUE(device_->lost());
  EXPECT_THROW(open->commit(handler), DeviceLostError);
  EXPECT_EQ(failed, 2) << "the handler has been called when commit() throws";
  EXPECT_EQ(queue_->begin("none"), nullptr);
  device_->waitIdle();
  std::vector<std::byte> bytes(texture->byteCount());
  EXPECT_THROW(texture->read(bytes), DeviceLostError);
  EXPECT_THROW(texture->write(bytes), DeviceLostError);
  EXPECT_THROW(makeTexture(PixelFormat::r16Float, {4, 4}), DeviceLostError);
  EXPECT_THROW(computePipeline("k_add"), DeviceLostError);
}

TEST(VulkanPipelineCache, DamagedFilesAreNotUnpacked) {
  const std::vector<std::byte> data{std::byte{1}, std::byte{2}, std::byte{3}};
  std::vector<std::byte> file = packPipelineCache(data);
  const auto unpacked = unpackPipelineCache(file);
  ASSERT_TRUE(unpacked.has_value());
  EXPECT_TRUE(std::ranges::equal(*unpacked, data));
  for (std::size_t index = 0; index < file.size(); ++index) {
    std::vector<std::byte> damaged = file;
    damaged[index] ^= std::byte{0x10};
    EXPECT_FALSE(unpackPipelineCache(damaged).has_value()) << "byte " << index;
    EXPECT_FALSE(unpackPipelineCache(std::span(file).first(index)).has_value()) << "cut at " << index;
  }
  file.push_back(std::byte{0});
  EXPECT_FALSE(unpackPipelineCache(file).has_value());
}

TEST(VulkanPipelineCache, TheFileIsWrittenAndUsedAndAWrongOneIgnored) {
  const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / "veloria-cache-test";
  const std::filesystem::path path = folder / "below" / "pipelines";
  std::filesystem::remove_all(folder);
  const auto makePipelines = [&] {
    const auto device = makeVulkanDevice({.gpu = "", .validationHandler = {}, .pipelineCachePath = path});
    device->makePipeline(*device->makeLibrary(backend().libraryBytes()), {"k_add"});
  };
  makePipelines();
  const std::vector<std::byte> written = readFile(path.string());
  EXPECT_TRUE(unpackPipelineCache(written).has_value());
  makePipelines();
  EXPECT_EQ(readFile(path.string()), written);
  for (const std::string& wrong : {std::string("nonsense"), std::string(5000, '\0')}) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << wrong;
    makePipelines();
    EXPECT_TRUE(unpackPipelineCache(readFile(path.string())).has_value());
  }
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);  // can't be written: no harm
  EXPECT_NO_THROW(makePipelines());
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace veloria::tests
