#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "AllocationCount.h"
#include "GpuTest.h"
#include "gpu/vulkan/VulkanDevice.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "gpu/vulkan/VulkanPipeline.h"

namespace veloria::tests {

namespace {

using namespace gpu;
using namespace gpu::vulkan;
using testing::HasSubstr;

std::string choice(const std::vector<DeviceInfo>& devices, const std::string& wish) {
  try {
    return std::to_string(chooseDevice(devices, wish));
  } catch (const NoDeviceError& error) {
    return error.what();
  }
}

TEST(VulkanFactory, PrefersTheKindsInOrderAndTakesNamesAndIndices) {
  const std::vector<DeviceInfo> devices{{0, "Software Rasteriser", DeviceType::cpu, true},
                                        {1, "Old Discrete", DeviceType::discrete, false},
                                        {2, "Integrated 600", DeviceType::integrated, true},
                                        {3, "Discrete 9000", DeviceType::discrete, true},
                                        {4, "Discrete 9001", DeviceType::discrete, true}};
  for (const auto& [wish, index] : {std::pair{"", "3"}, {"0", "0"}, {"SOFTWARE", "0"}, {"discrete", "3"}}) {
    EXPECT_EQ(choice(devices, wish), index) << wish;
  }
  EXPECT_THAT(choice(devices, "quantum"), HasSubstr("\"quantum\""));
  EXPECT_THAT(choice(devices, "1"), HasSubstr("timeline"));
  EXPECT_THAT(choice({}, ""), HasSubstr("no Vulkan device"));
}

TEST(VulkanFactory, NeedsNoDisplay) {
  for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "XAUTHORITY"}) unsetenv(variable);
  const std::vector<DeviceInfo> devices = listDevices();
  ASSERT_FALSE(devices.empty());
  const auto device = makeVulkanDevice({.gpu = "0", .validationHandler = {}, .pipelineCachePath = {}});
  EXPECT_EQ(device->name(), devices[0].name);
  EXPECT_FALSE(device->lost());
  EXPECT_THROW(makeVulkanDevice({.gpu = "no such", .validationHandler = {}, .pipelineCachePath = {}}), NoDeviceError);
}

TEST(VulkanFactoryDeathTest, SaysWhenThereIsNoDriver) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto withoutDrivers = [] {
    setenv("VK_ICD_FILENAMES", "/nowhere.json", 1);
    setenv("VK_DRIVER_FILES", "/nowhere.json", 1);
    const bool none = listDevices().empty();
    try {
      makeVulkanDevice({});
    } catch (const NoDeviceError&) {
      std::_Exit(none ? 7 : 8);
    }
    std::_Exit(9);
  };
  EXPECT_EXIT(withoutDrivers(), testing::ExitedWithCode(7), "");
}

class VulkanTest : public GpuTest {};

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
  EXPECT_NO_THROW(device_->makeLibrary(good));
  EXPECT_THROW(computePipeline("f_copy"), DeviceError) << "another stage than wanted";
  EXPECT_THROW(renderPipeline("k_add", PixelFormat::rgba16Float), DeviceError);
}

TEST_F(VulkanTest, ASharedTextureIsWrittenWithoutWaitingForWhatIsInFlight) {
  const auto pipeline = computePipeline("k_slow");
  const auto busy = makeTexture(PixelFormat::r16Float, {256, 64});
  const auto texture = makeTexture(PixelFormat::bgra8Unorm, {64, 8}, TextureUsage::shaderRead, StorageMode::shared);
  const std::vector<std::byte> picture(texture->byteCount(), std::byte{7});
  device_->waitIdle();
  Frame* frame = queue_->begin("slow");
  frame->run({.pipeline = *pipeline, .bytes = floats({10000, 0}), .target = *busy});
  frame->commit();
  const VulkanTimeline& timeline = vulkanDevice(*device_).timeline();
  const std::uint64_t committed = timeline.submitted();
  texture->write(picture);
  EXPECT_LT(timeline.completed(), committed);
  std::vector<std::byte> read(picture.size());
  texture->read(read);
  EXPECT_EQ(read, picture);
}

TEST_F(VulkanTest, ALostDeviceFailsEverythingAndCanBeMadeAnew) {
  const auto pipeline = computePipeline("k_slow");
  const auto texture = makeTexture(PixelFormat::r16Float, {64, 64});
  int done = 0;
  int failed = 0;
  const auto encode = [&](Frame& frame) {
    frame.run({.pipeline = *pipeline, .bytes = floats({5000, 0}), .target = *texture});
  };
  const CompletedHandler handler = [&](const Completion& completion) { ++(completion.failed ? failed : done); };
  run(encode, handler);
  Frame* inFlight = queue_->begin("in flight");
  encode(*inFlight);
  inFlight->commit(handler);
  Frame* open = queue_->begin("open");
  encode(*open);

  simulateLoss(*device_);
  EXPECT_TRUE(device_->lost());
  encode(*open);
  EXPECT_THROW(open->commit(handler), DeviceLostError);
  EXPECT_EQ(done, 1);
  EXPECT_EQ(failed, 2) << "the handler has been called when commit() throws";
  EXPECT_EQ(queue_->begin("none"), nullptr);
  device_->waitIdle();
  std::vector<std::byte> bytes(texture->byteCount());
  EXPECT_THROW(texture->read(bytes), DeviceLostError);
  EXPECT_THROW(texture->write(bytes), DeviceLostError);
  EXPECT_THROW(makeTexture(PixelFormat::r16Float, {4, 4}), DeviceLostError);
  EXPECT_THROW(computePipeline("k_add"), DeviceLostError);

  const auto another = backend().makeDevice();
  EXPECT_FALSE(another->lost());
  const auto library = another->makeLibrary(backend().libraryBytes());
  EXPECT_NE(another->makePipeline(*library, {.function = "k_add"}), nullptr);
}

// Without validation, which allocates as it likes.
TEST_F(VulkanTest, FramesAllocateNothingAfterWarmUp) {
  if (!countsAllocations()) GTEST_SKIP() << "allocations can't be counted under a sanitizer";
  queue_.reset();
  library_.reset();
  device_ = makeVulkanDevice({});
  library_ = device_->makeLibrary(backend().libraryBytes());
  queue_ = device_->makeFrameQueue();
  const auto add = computePipeline("k_add");
  const auto draw = renderPipeline("f_copy", PixelFormat::bgra8Unorm);
  const auto a = makeTexture(PixelFormat::r16Float, {64, 16});
  const auto b = makeTexture(PixelFormat::r16Float, {64, 16});
  const auto surface = makeHostSurface(*device_, [](auto, Size) {});
  surface->configure({64, 16}, PixelFormat::bgra8Unorm);
  std::atomic<int> completed{0};
  const auto frame = [&] {
    Frame* next = queue_->begin("a label that is longer than what a string holds in itself");
    for (int iteration = 0; iteration < 40; ++iteration) {
      next->run({.pipeline = *add,
                 .label = "another label that is longer than what a string holds",
                 .images = {iteration % 2 == 0 ? a.get() : b.get()},
                 .bytes = floats({1}),
                 .target = iteration % 2 == 0 ? *b : *a});
    }
    if (Drawable* drawable = surface->nextDrawable()) {
      next->run({.pipeline = *draw, .textures = {a.get()}, .target = drawable->texture()});
      next->present(*drawable);
    }
    next->commit([&completed](const Completion&) { ++completed; });
  };
  for (const bool profiling : {false, true}) {
    queue_->setProfiling(profiling);
    for (int warmUp = 0; warmUp < 12; ++warmUp) frame();
    device_->waitIdle();
    const std::uint64_t before = allocationsInProcess();
    for (int number = 0; number < 30; ++number) frame();
    device_->waitIdle();
    EXPECT_EQ(allocationsInProcess() - before, 0U) << (profiling ? "with" : "without") << " profiling";
  }
  EXPECT_EQ(completed, 84);
  const std::uint64_t before = allocationsInProcess();
  makeTexture(PixelFormat::r16Float, {4, 4});
  EXPECT_GT(allocationsInProcess() - before, 0U) << "the counter counts";
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
  const std::filesystem::path folder =
      std::filesystem::path(testing::TempDir()) / ("veloria-cache-" + std::to_string(getpid()));
  const std::filesystem::path path = folder / "below" / "pipelines";
  const auto makePipelines = [&] {
    const auto device = makeVulkanDevice({.gpu = "", .validationHandler = {}, .pipelineCachePath = path});
    const auto library = device->makeLibrary(backend().libraryBytes());
    device->makePipeline(*library, {.function = "k_add"});
  };
  makePipelines();
  const std::vector<std::byte> written = readFile(path.string());
  EXPECT_TRUE(unpackPipelineCache(written).has_value());
  makePipelines();
  EXPECT_EQ(readFile(path.string()), written);
  for (const std::string& wrong : {std::string(), std::string("nonsense"), std::string(5000, '\0')}) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << wrong;
    makePipelines();
    EXPECT_TRUE(unpackPipelineCache(readFile(path.string())).has_value());
  }
  const std::filesystem::directory_iterator files(path.parent_path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 1) << "nothing half written stays behind";
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);  // can't be written: no harm
  EXPECT_NO_THROW(makePipelines());
  std::filesystem::remove_all(folder);
}

}  // namespace

}  // namespace veloria::tests
