// Starting, stopping and failing, with a stream that does what the test says and a recording device.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "gpu/recording/RecordingDevice.h"
#include "render/MenuBarCapture.h"

namespace veloria::tests {
namespace {

// Read once by the log, so it is set before anything asks.
[[maybe_unused]] const int diagnosticsOn = setenv("NIMBRA_DEBUG", "1", 1);

struct ScriptedStream final : BarCaptureStream {
  void start(const BarRegion& wanted, BarCaptureHandlers given) override {
    ++starts;
    region = wanted;
    handlers = std::move(given);
    if (failsAtOnce) handlers.failed("no way");
  }
  void stop() override { handlers = {}; }
  void show(gpu::Size size, unsigned char value) const {
    const std::vector<std::byte> rows(std::size_t{size.width} * size.height * 4, std::byte{value});
    handlers.picture({size, rows});
  }
  int starts = 0;
  bool failsAtOnce = false;
  BarRegion region;
  BarCaptureHandlers handlers;
};

class MenuBarCaptureTest : public testing::Test {
 protected:
  /// The first byte of the picture that renderers get; -1 without one.
  int shown() {
    const auto texture = box_->stored();
    if (texture == nullptr) return -1;
    std::vector<std::byte> bytes(texture->byteCount());
    texture->read(bytes);
    return static_cast<int>(bytes.front());
  }
  void start() { capture_.start(7, strip, 1); }

  gpu::recording::RecordingDevice device_{{}};
  ScriptedStream stream_;
  MenuBarCapture capture_{device_, stream_};
  const std::shared_ptr<TextureBox> box_ = capture_.box();
  static constexpr Rect strip{0, 0, 1920, 32};
  static constexpr gpu::Size size{1920, 32};
};

TEST_F(MenuBarCaptureTest, StartsOnlyIfSomethingDiffers) {
  EXPECT_FALSE(capture_.isRunning());
  int starts = 0;
  for (const BarRegion& region : {BarRegion{7, strip, 1}, BarRegion{8, strip, 1}, BarRegion{8, {0, 0, 1920, 64}, 1},
                                  BarRegion{8, {0, 0, 1920, 64}, 2}}) {
    for (int i = 0; i < 2; ++i) capture_.start(region.displayID, region.rect, region.scale);
    EXPECT_TRUE(capture_.isRunning());
    EXPECT_EQ(stream_.starts, ++starts);
    EXPECT_EQ(stream_.region, region);
    EXPECT_EQ(shown(), -1) << "of another region";
    stream_.show(size, 1);
  }
}

TEST_F(MenuBarCaptureTest, TheNewestPictureIsInTheBoxAndStopEmptiesIt) {
  start();
  std::vector<const gpu::Texture*> textures;
  for (unsigned char value = 1; value <= 9; ++value) {
    stream_.show(size, value);
    EXPECT_EQ(shown(), value);
    EXPECT_EQ(box_->stored()->format(), gpu::PixelFormat::bgra8Unorm);
    // A frame in flight may still read this texture or the one before.
    textures.push_back(box_->stored().get());
    const auto lastThree = textures.end() - std::min<std::ptrdiff_t>(3, std::ssize(textures));
    EXPECT_EQ(std::count(lastThree, textures.end(), textures.back()), 1);
  }
  EXPECT_LE(device_.log().count(gpu::recording::CallKind::makeTexture), 4U);
  EXPECT_EQ(capture_.frameCount(), 9);
  stream_.show({1920, 64}, 3);
  EXPECT_EQ(box_->stored()->size(), (gpu::Size{1920, 64}));
  capture_.stop();
  EXPECT_FALSE(capture_.isRunning());
  EXPECT_EQ(shown(), -1);
  start();
  stream_.show(size, 42);
  EXPECT_EQ(shown(), 42) << "in the same box";
}

TEST_F(MenuBarCaptureTest, PicturesThatCantBeTexturesAreDropped) {
  start();
  stream_.show(size, 5);
  const std::array<std::byte, 16> few{};
  for (const gpu::Size bad : {gpu::Size{0, 0}, {2, 1}, {4, 4}, {0, 4}, {0xFFFFFFFF, 0xFFFFFFFF}, {20000, 1}}) {
    stream_.handlers.picture({bad, few});
  }
  stream_.show({0, 4}, 6);
  stream_.show({20000, 1}, 6);
  stream_.show({1, 16385}, 6);
  device_.failures().makeTexture = true;
  stream_.show({64, 32}, 9);
  EXPECT_EQ(capture_.frameCount(), 1);
  EXPECT_EQ(shown(), 5);
  device_.failures().makeTexture = false;
  stream_.show({64, 32}, 9);
  EXPECT_EQ(shown(), 9);
}

TEST_F(MenuBarCaptureTest, TheSystemsTexturesAreShownAsTheyAreAndGivenBackInTime) {
  start();
  const gpu::TextureDescriptor wanted{.format = gpu::PixelFormat::bgra8Unorm, .size = size, .label = "captured"};
  gpu::TextureDescriptor other = wanted;
  other.format = gpu::PixelFormat::rgba16Float;
  gpu::TextureDescriptor unreadable = wanted;
  unreadable.usage = gpu::TextureUsage::renderTarget;
  for (const auto& dropped : {other, unreadable}) stream_.handlers.texture(device_.makeTexture(dropped));
  EXPECT_EQ(box_->stored(), nullptr);
  std::vector<std::weak_ptr<gpu::Texture>> given;
  for (int i = 0; i < 5; ++i) {
    const auto texture = device_.makeTexture(wanted);
    given.push_back(texture);
    stream_.handlers.texture(texture);
    EXPECT_EQ(box_->stored(), texture);
  }
  EXPECT_EQ(capture_.frameCount(), 5);
  EXPECT_FALSE(given[3].expired()) << "a frame in flight may still read it";
  EXPECT_TRUE(given[2].expired()) << "the system has only a few";
  capture_.stop();
  for (const auto& texture : given) EXPECT_TRUE(texture.expired());
}

TEST_F(MenuBarCaptureTest, AFailureIsKeptAndTheNextStartTriesAgain) {
  stream_.failsAtOnce = true;
  start();
  EXPECT_FALSE(capture_.isRunning());
  EXPECT_EQ(capture_.lastError(), "no way");
  stream_.failsAtOnce = false;
  start();
  EXPECT_TRUE(capture_.isRunning()) << "nothing differs, but it did not run";
  EXPECT_EQ(capture_.lastError(), "no way") << "until it has really started";
  stream_.handlers.started(size);
  EXPECT_EQ(capture_.lastError(), std::nullopt);
  stream_.show(size, 3);
  stream_.handlers.failed("the compositor ended");
  EXPECT_FALSE(capture_.isRunning());
  EXPECT_EQ(capture_.lastError(), "the compositor ended");
  EXPECT_EQ(shown(), -1) << "old text would stay in the light";
  EXPECT_EQ(stream_.starts, 2) << "nothing is tried again by itself";
}

TEST_F(MenuBarCaptureTest, DiagnosticsTellOfStartAndFailure) {
  capture_.start(7, {0, 0, 1512.5, 37}, 2);
  testing::internal::CaptureStderr();
  stream_.handlers.started({3025, 74});
  stream_.handlers.failed("it broke");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[nimbra] capture started rect=(0.0, 0.0, 1512.5, 37.0) 3025x74\n[nimbra] capture failed: it broke\n");
}

}  // namespace
}  // namespace veloria::tests
