#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "GpuTest.h"
#include "gpu/vulkan/VulkanDevice.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "gpu/vulkan/VulkanPipelineCache.h"

namespace veloria::gpu::vulkan {

namespace {

using test::backend;
using test::GpuTest;
using test::readFile;
using ::testing::HasSubstr;

std::vector<std::byte> words(const std::vector<std::uint32_t>& values) {
  const auto bytes = std::as_bytes(std::span(values));
  return {bytes.begin(), bytes.end()};
}

std::string choiceFailure(const std::vector<DeviceInfo>& devices, const std::string& wish) {
  try {
    return "chose " + std::to_string(chooseDevice(devices, wish));
  } catch (const NoDeviceError& error) {
    return error.what();
  }
}

TEST(ChooseDeviceTest, PrefersTheKindsInOrderAndTakesNamesAndIndices) {
  const std::vector<DeviceInfo> devices{{0, "Software Rasteriser", DeviceType::cpu, true},
                                        {1, "Old Discrete", DeviceType::discrete, false},
                                        {2, "Integrated 600", DeviceType::integrated, true},
                                        {3, "Discrete 9000", DeviceType::discrete, true},
                                        {4, "Discrete 9001", DeviceType::discrete, true}};
  EXPECT_EQ(chooseDevice(devices, ""), 3U);
  EXPECT_EQ(chooseDevice(devices, "0"), 0U);
  EXPECT_EQ(chooseDevice(devices, "SOFTWARE"), 0U);
  EXPECT_EQ(chooseDevice(devices, "discrete"), 3U);
  EXPECT_THAT(choiceFailure(devices, "quantum"), HasSubstr("\"quantum\""));
  EXPECT_THAT(choiceFailure(devices, "1"), HasSubstr("timeline"));
  EXPECT_THAT(choiceFailure({}, ""), HasSubstr("no Vulkan device"));
}

TEST(VulkanDeviceTest, IsMadeWithoutAnyDisplay) {
  for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "XAUTHORITY"}) unsetenv(variable);
  const std::vector<DeviceInfo> devices = listDevices();
  ASSERT_FALSE(devices.empty());
  const auto device = makeVulkanDevice({.gpu = "0", .validationHandler = {}, .pipelineCachePath = {}});
  EXPECT_EQ(device->name(), devices[0].name);
  EXPECT_FALSE(device->lost());
  EXPECT_THROW(makeVulkanDevice({.gpu = "no such", .validationHandler = {}, .pipelineCachePath = {}}), NoDeviceError);
}

// A computer without a driver: the loader finds none.
TEST(VulkanDeviceDeathTest, SaysWhenThereIsNoDriver) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        setenv("VK_ICD_FILENAMES", "/nowhere.json", 1);
        setenv("VK_DRIVER_FILES", "/nowhere.json", 1);
        const bool none = listDevices().empty();
        try {
          makeVulkanDevice({});
        } catch (const NoDeviceError&) {
          std::_Exit(none ? 7 : 8);
        }
        std::_Exit(9);
      },
      ::testing::ExitedWithCode(7), "");
}

class VulkanTest : public GpuTest {
 protected:
  void expectRefused(const std::vector<std::byte>& bytes, const std::string& what) {
    SCOPED_TRACE(what);
    EXPECT_THROW(device_->makeLibrary(bytes), DeviceError);
  }
};

TEST_F(VulkanTest, HostileLibrariesAreRefused) {
  constexpr std::uint32_t magic = 0x07230203;
  const std::vector<std::byte> good = backend().libraryBytes();
  expectRefused({}, "empty");
  expectRefused(std::vector<std::byte>(3), "three bytes");
  expectRefused(std::vector<std::byte>(4096), "zeros");
  expectRefused(std::vector<std::byte>((std::size_t{16} << 20) + 4), "too large");
  expectRefused(words({magic}), "only the magic number");
  expectRefused(words({magic, 0x00010500, 0, 10, 0}), "no function");
  expectRefused(words({magic, 0x00010600, 0, 10, 0}), "too new");
  expectRefused(words({magic, 0x00010500, 0, 10, 0, 0}), "an instruction of length 0");
  expectRefused(words({magic, 0x00010500, 0, 10, 0, 15U | 9U << 16, 5, 1}), "an instruction beyond the end");
  expectRefused(words({magic, 0x00010500, 0, 10, 0, 15U | 2U << 16, 5}), "a function without a name");
  expectRefused(words({magic, 0x00010500, 0, 10, 0, 15U | 4U << 16, 5, 1, 0x6B6B6B6B}), "a name without an end");
  expectRefused(words({magic, 0x00010500, 0, 10, 0, 15U | 4U << 16, 77, 1, 0x6B}), "another stage");
  expectRefused(words({0x03022307, 0x00000100}), "the other byte order");
  for (const std::size_t cut : {std::size_t{1}, std::size_t{4}, good.size() / 2 - good.size() / 2 % 4}) {
    std::vector<std::byte> shorter(good.begin(), good.end() - static_cast<std::ptrdiff_t>(cut));
    if (cut % 4 == 0 && cut < 8) continue;  // may still be whole instructions
    expectRefused(shorter, "cut by " + std::to_string(cut));
  }
  EXPECT_NO_THROW(device_->makeLibrary(good));
}

TEST_F(VulkanTest, FunctionsOfTheWrongStageAreRefused) {
  EXPECT_THROW(computePipeline("f_copy"), DeviceError);
  EXPECT_THROW(renderPipeline("k_add", PixelFormat::rgba16Float), DeviceError);
}

TEST_F(VulkanTest, ASharedTextureIsWrittenWithoutWaitingForWhatIsInFlight) {
  const auto pipeline = computePipeline("k_slow");
  const auto busy = makeTexture(PixelFormat::r16Float, {256, 64});
  const auto texture = device_->makeTexture(
      {PixelFormat::bgra8Unorm, {64, 8}, TextureUsage::shaderRead, StorageMode::shared, "picture"});
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

TEST_F(VulkanTest, ALostDeviceFailsEverythingAndStillGoesInPeace) {
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
}

TEST_F(VulkanTest, ADeviceCanBeMadeAnewAfterALoss) {
  simulateLoss(*device_);
  queue_.reset();
  library_.reset();
  device_.reset();
  SetUp();
  const auto pipeline = computePipeline("k_coordinates");
  const auto texture = makeTexture(PixelFormat::rg16Float, {8, 8});
  runOne({.pipeline = *pipeline, .target = *texture});
  EXPECT_EQ(test::readFloats(*texture).back(), 7);
}

TEST(VulkanPipelineCacheTest, DamagedFilesAreNotUnpacked) {
  const std::vector<std::byte> data{std::byte{1}, std::byte{2}, std::byte{3}};
  std::vector<std::byte> file = packPipelineCache(data);
  const auto unpacked = unpackPipelineCache(file);
  ASSERT_TRUE(unpacked.has_value());
  EXPECT_TRUE(std::equal(unpacked->begin(), unpacked->end(), data.begin(), data.end()));
  for (std::size_t index = 0; index < file.size(); ++index) {
    std::vector<std::byte> damaged = file;
    damaged[index] ^= std::byte{0x10};
    EXPECT_FALSE(unpackPipelineCache(damaged).has_value()) << "byte " << index;
    EXPECT_FALSE(unpackPipelineCache(std::span(file).first(index)).has_value()) << "cut at " << index;
  }
  file.push_back(std::byte{0});
  EXPECT_FALSE(unpackPipelineCache(file).has_value());
}

TEST(VulkanPipelineCacheTest, TheFileIsWrittenAndUsedAndAWrongOneIgnored) {
  const std::filesystem::path folder =
      std::filesystem::path(::testing::TempDir()) / ("veloria-cache-" + std::to_string(getpid()));
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
  std::size_t files = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(path.parent_path())) ++files;
  EXPECT_EQ(files, 1U) << "nothing half written stays behind";
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);  // can't be written: no harm
  EXPECT_NO_THROW(makePipelines());
  std::filesystem::remove_all(folder);
}

}  // namespace

}  // namespace veloria::gpu::vulkan
