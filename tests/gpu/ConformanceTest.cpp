#include <algorithm>
#include <mutex>
#include <numeric>
#include <random>
#include <thread>

#include "GpuTest.h"

namespace veloria::gpu::test {

namespace {

constexpr TextureUsage readWrite = TextureUsage::shaderRead | TextureUsage::shaderWrite;

struct FormatCase {
  PixelFormat format;
  TextureUsage usage;
};

void PrintTo(const FormatCase& value, std::ostream* stream) {
  *stream << pixelFormatName(value.format) << " usage " << static_cast<unsigned>(value.usage);
}

class RoundTripTest : public GpuTest, public ::testing::WithParamInterface<FormatCase> {};

TEST_P(RoundTripTest, BytesComeBackAsTheyWereWritten) {
  const FormatCase& param = GetParam();
  std::minstd_rand random(7);
  for (const Size size : {Size{1, 1}, Size{33, 7}, Size{1920, 33}}) {
    for (const StorageMode storage : {StorageMode::gpuPrivate, StorageMode::shared}) {
      const auto texture = device_->makeTexture({param.format, size, param.usage, storage, "round trip"});
      ASSERT_EQ(texture->byteCount(), bytesPerPixel(param.format) * size.width * size.height);
      std::vector<std::byte> written(texture->byteCount());
      std::generate(written.begin(), written.end(), [&] { return static_cast<std::byte>(random() & 0x7B); });
      std::vector<std::byte> read(written.size());
      for (int round = 0; round < 2; ++round) {
        std::reverse(written.begin(), written.end());
        texture->write(written);
        texture->read(read);
        ASSERT_EQ(read, written);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Formats, RoundTripTest,
    ::testing::Values(FormatCase{PixelFormat::r16Float, readWrite}, FormatCase{PixelFormat::rg16Float, readWrite},
                      FormatCase{PixelFormat::rgba16Float, readWrite},
                      FormatCase{PixelFormat::rgba16Float, TextureUsage::shaderRead | TextureUsage::renderTarget},
                      FormatCase{PixelFormat::rgba8Unorm, TextureUsage::shaderRead | TextureUsage::renderTarget},
                      FormatCase{PixelFormat::bgra8Unorm, TextureUsage::shaderRead | TextureUsage::renderTarget},
                      FormatCase{PixelFormat::bgra8Unorm, TextureUsage::shaderRead},
                      FormatCase{PixelFormat::bgra8UnormSrgb, TextureUsage::shaderRead | TextureUsage::renderTarget}));

TEST_F(GpuTest, HandlersAreCalledInTheOrderOfCommitsOffThisThread) {
  struct Calls {
    std::mutex mutex;
    std::vector<int> numbers;
    bool onThisThread = false;
    bool failed = false;
    std::thread::id caller = std::this_thread::get_id();
  } calls;
  constexpr int frames = 20;
  const auto other = device_->makeFrameQueue();
  for (int number = 0; number < frames; ++number) {
    Frame* frame = (number % 3 == 0 ? other : queue_)->begin("frame");
    ASSERT_NE(frame, nullptr);
    frame->commit([&calls, number](const Completion& completion) {
      const std::lock_guard lock(calls.mutex);
      calls.numbers.push_back(number);
      calls.onThisThread = calls.onThisThread || std::this_thread::get_id() == calls.caller;
      calls.failed = calls.failed || completion.failed;
    });
  }
  device_->waitIdle();
  std::vector<int> expected(frames);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(calls.numbers, expected);
  EXPECT_FALSE(calls.failed);
  EXPECT_EQ(calls.onThisThread, !backend().executes);
}

TEST_F(GpuTest, LibrariesKnowTheirFunctions) {
  EXPECT_TRUE(library_->contains("k_add"));
  EXPECT_TRUE(library_->contains("f_copy"));
  EXPECT_FALSE(library_->contains("main"));
  EXPECT_FALSE(library_->contains(""));
}

}  // namespace

}  // namespace veloria::gpu::test
