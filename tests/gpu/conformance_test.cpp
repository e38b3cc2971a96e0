// What every back end does, whether it runs the functions or not.

#include <algorithm>
#include <mutex>
#include <numeric>
#include <random>
#include <thread>

#include "GpuTest.h"
#include "gpu/Surface.h"

namespace veloria::tests {

namespace {

using namespace gpu;

constexpr TextureUsage written = TextureUsage::shaderRead | TextureUsage::shaderWrite;

TEST_F(GpuTest, BytesComeBackAsTheyWereWritten) {
  const std::pair<PixelFormat, TextureUsage> kinds[] = {
      {PixelFormat::r16Float, written},        {PixelFormat::rg16Float, written},
      {PixelFormat::rgba16Float, written},     {PixelFormat::rgba16Float, drawnAndRead},
      {PixelFormat::rgba8Unorm, drawnAndRead}, {PixelFormat::bgra8Unorm, TextureUsage::shaderRead},
      {PixelFormat::bgra8Unorm, drawnAndRead}, {PixelFormat::bgra8UnormSrgb, drawnAndRead}};
  std::minstd_rand random(7);
  for (const auto& [format, usage] : kinds) {
    SCOPED_TRACE(pixelFormatName(format));
    for (const Size size : {Size{1, 1}, Size{33, 7}, Size{1920, 33}}) {
      for (const StorageMode storage : {StorageMode::gpuPrivate, StorageMode::shared}) {
        const auto texture = makeTexture(format, size, usage, storage);
        std::vector<std::byte> bytes(bytesPerPixel(format) * size.width * size.height);
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::byte>(random() & 0x7B); });
        std::vector<std::byte> read(bytes.size());
        for (int round = 0; round < 2; ++round) {
          std::reverse(bytes.begin(), bytes.end());
          texture->write(bytes);
          texture->read(read);
          ASSERT_EQ(read, bytes);
        }
      }
    }
  }
}

TEST_F(GpuTest, HandlersAreCalledInTheOrderOfCommitsOffThisThread) {
  std::mutex mutex;
  std::vector<int> numbers;
  bool onThisThread = false;
  bool failed = false;
  const std::thread::id caller = std::this_thread::get_id();
  const auto other = device_->makeFrameQueue();
  for (int number = 0; number < 20; ++number) {
    Frame* frame = (number % 3 == 0 ? other : queue_)->begin("frame");
    ASSERT_NE(frame, nullptr);
    frame->commit([&, number](const Completion& completion) {
      const std::lock_guard lock(mutex);
      numbers.push_back(number);
      onThisThread = onThisThread || std::this_thread::get_id() == caller;
      failed = failed || completion.failed;
    });
  }
  device_->waitIdle();
  std::vector<int> expected(20);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(numbers, expected);
  EXPECT_FALSE(failed);
  EXPECT_EQ(onThisThread, !backend().executes);
}

TEST_F(GpuTest, LibrariesKnowTheirFunctionsAndSharePipelinesInUse) {
  EXPECT_TRUE(library_->contains("k_add"));
  EXPECT_TRUE(library_->contains("f_copy"));
  EXPECT_FALSE(library_->contains("main"));
  EXPECT_FALSE(library_->contains(""));
  const auto add = computePipeline("k_add");
  const auto copy = renderPipeline("f_copy", PixelFormat::bgra8Unorm);
  EXPECT_EQ(computePipeline("k_add"), add);
  EXPECT_EQ(renderPipeline("f_copy", PixelFormat::bgra8Unorm), copy);
  EXPECT_NE(renderPipeline("f_copy", PixelFormat::rgba16Float), copy);
  EXPECT_NE(device_->makePipeline(*library_, {"f_copy", "v_cover", PixelFormat::bgra8Unorm, 1}), copy);
}

TEST_F(GpuTest, AFrameEndsWhenTheNextOneIsBegun) {
  Frame* first = queue_->begin("never committed");
  const auto other = device_->makeFrameQueue();
  Frame* second = other->begin("next");
  EXPECT_THROW(first->commit(), PreconditionError);
  second->commit();
}

TEST_F(GpuTest, BrokenContractsAreNamed) {
  const auto texture = makeTexture(PixelFormat::rgba16Float, {4, 4});
  const auto target = makeTexture(PixelFormat::rgba16Float, {4, 4}, TextureUsage::renderTarget);
  const auto add = computePipeline("k_add");
  const auto copy = renderPipeline("f_copy", PixelFormat::rgba16Float);
  const auto other = renderPipeline("f_copy", PixelFormat::bgra8Unorm);
  OffscreenDrawable drawable(target);
  std::vector<std::byte> bytes(4097);
  const std::span few = std::span(bytes).first(127);
  Frame* frame = nullptr;
  const auto make = [&](PixelFormat format, std::uint32_t width, std::uint32_t height, TextureUsage usage) {
    makeTexture(format, {width, height}, usage);
  };
  const auto link = [&](const char* fragment, const char* vertex, PixelFormat format) {
    device_->makePipeline(*library_, {fragment, vertex, format});
  };
  const struct {
    const char* says;
    std::function<void()> breaks;
  } cases[] = {
      {"format is invalid", [&] { make(PixelFormat::invalid, 1, 1, TextureUsage::shaderRead); }},
      {"1 to 16384", [&] { make(PixelFormat::r16Float, 0, 1, TextureUsage::shaderRead); }},
      {"1 to 16384", [&] { make(PixelFormat::r16Float, 1, 16385, TextureUsage::shaderRead); }},
      {"usage", [&] { make(PixelFormat::r16Float, 1, 1, TextureUsage(0)); }},
      {"usage", [&] { make(PixelFormat::r16Float, 1, 1, TextureUsage(8)); }},
      {"not exactly", [&] { texture->write(few); }},
      {"not exactly", [&] { texture->read(few); }},
      {"\"k_nothing\"", [&] { computePipeline("k_nothing"); }},
      {"\"v_nothing\"", [&] { link("f_copy", "v_nothing", PixelFormat::rgba16Float); }},
      {"\"f_nothing\"", [&] { link("f_nothing", "v_cover", PixelFormat::rgba16Float); }},
      {"format is invalid", [&] { link("f_copy", "v_cover", PixelFormat::invalid); }},
      {"committed", [&] { frame->commit(), frame->commit(); }},
      {"committed", [&] { frame->commit(), frame->run({.pipeline = *copy, .target = *target}); }},
      {"presents a drawable already", [&] { frame->present(drawable), frame->present(drawable); }},
      {"presented already", [&] { frame->present(drawable), frame->run({.pipeline = *copy, .target = *target}); }},
      {"render target", [&] { frame->run({.pipeline = *copy, .target = *texture}); }},
      {"to be written", [&] { frame->run({.pipeline = *add, .target = *target}); }},
      {"to be read", [&] { frame->run({.pipeline = *add, .images = {target.get()}, .target = *texture}); }},
      {"its own target", [&] { frame->run({.pipeline = *add, .textures = {texture.get()}, .target = *texture}); }},
      {"missing between others",
       [&] {
         frame->run({.pipeline = *copy, .textures = {nullptr, texture.get()}, .target = *target});
       }},
      {"has no images", [&] { frame->run({.pipeline = *copy, .images = {texture.get()}, .target = *target}); }},
      {"more than 4096", [&] { frame->run({.pipeline = *add, .bytes = bytes, .target = *texture}); }},
      {"another format", [&] { frame->run({.pipeline = *other, .target = *target}); }},
  };
  for (const auto& broken : cases) {
    frame = queue_->begin("frame");
    ASSERT_NE(frame, nullptr);
    try {
      broken.breaks();
      ADD_FAILURE() << "nothing was thrown: " << broken.says;
    } catch (const PreconditionError& error) {
      EXPECT_THAT(error.what(), testing::HasSubstr(broken.says));
    }
  }
}

}  // namespace

}  // namespace veloria::tests
