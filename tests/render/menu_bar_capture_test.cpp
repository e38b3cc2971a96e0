// Starting, stopping and failing, with a stream that does what the test says and a recording device.

#include <gtest/gtest.h>

#include "gpu/recording/RecordingDevice.h"
#include "render/MenuBarCapture.h"

namespace veloria::tests {
namespace {

struct ScriptedStream final : BarCaptureStream {
  void start(const BarRegion& wanted, BarCaptureHandlers given) override {
    ++starts;
    region = wanted;
    handlers = std::move(given);
  }
  void stop() override { handlers = {}; }
  void show(gpu::Size size, unsigned char value) const {
    const std::vector<std::byte> rows(std::size_t{size.width} * size.height * 4, std::byte{value});
    handlers.picture({size, rows});
  }
  int starts = 0;
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
  int starts = 0;
  for (const BarRegion& region : {BarRegion{7, strip, 1}, BarRegion{8, strip, 1}, BarRegion{8, {0, 0, 1920, 64}, 1},
                                  BarRegion{8, {0, 0, 1920, 64}, 2}}) {
    for (int i = 0; i < 2; ++i) capture_.start(region.displayID, region.rect, region.scale);
    EXPECT_EQ(stream_.starts, ++starts);
    EXPECT_EQ(stream_.region, region);
    EXPECT_EQ(shown(), -1) << "of another region";
    stream_.show(size, 1);
  }
}

TEST_F(MenuBarCaptureTest, TheNewestPictureIsInTheBoxAndStopEmptiesIt) {
  start();
  std::vector<const gpu::Texture*> textures{nullptr, nullptr};
  for (unsigned char value = 1; value <= 9; ++value) {
    stream_.show(size, value);
    EXPECT_EQ(shown(), value);
    // A frame in flight may still read this texture or the one before.
    textures.push_back(box_->stored().get());
    EXPECT_EQ(std::count(textures.end() - 3, textures.end(), textures.back()), 1);
  }
  EXPECT_LE(device_.log.textures, 4U);
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
  for (const gpu::Size bad : {gpu::Size{0, 0}, {2, 1}, {4, 4}, {0xFFFFFFFF, 0xFFFFFFFF}}) {
    stream_.handlers.picture({bad, few});
  }
  for (const gpu::Size bad : {gpu::Size{0, 4}, {20000, 1}, {1, 16385}}) stream_.show(bad, 6);
  device_.failures.makeTexture = true;
  stream_.show({64, 32}, 9);
  EXPECT_EQ(capture_.frameCount(), 1);
  EXPECT_EQ(shown(), 5);
}

TEST_F(MenuBarCaptureTest, TheSystemsTexturesAreShownAsTheyAreAndGivenBackInTime) {
  start();
  const gpu::TextureDescriptor wanted{.format = gpu::PixelFormat::bgra8Unorm, .size = size, .label = "captured"};
  gpu::TextureDescriptor other = wanted;
  other.format = gpu::PixelFormat::rgba16Float;
  stream_.handlers.texture(device_.makeTexture(other));
  EXPECT_EQ(box_->stored(), nullptr);
  std::vector<std::weak_ptr<gpu::Texture>> given;
  for (int i = 0; i < 5; ++i) {
    const auto texture = device_.makeTexture(wanted);
    given.push_back(texture);
    stream_.handlers.texture(texture);
    EXPECT_EQ(box_->stored(), texture);
  }
  EXPECT_FALSE(given[3].expired()) << "a frame in flight may still read it";
  EXPECT_TRUE(given[2].expired()) << "the system has only a few";
  capture_.stop();
  for (const auto& texture : given) EXPECT_TRUE(texture.expired());
}

TEST_F(MenuBarCaptureTest, AFailureIsKeptAndTheNextStartTriesAgain) {
  start();
  stream_.show(size, 3);
  stream_.handlers.failed("the compositor ended");
  EXPECT_FALSE(capture_.isRunning());
  EXPECT_EQ(shown(), -1) << "old text would stay in the light";
  start();
  EXPECT_EQ(stream_.starts, 2) << "nothing differs, but it did not run";
  EXPECT_EQ(capture_.lastError(), "the compositor ended") << "until it has really started";
  stream_.handlers.started(size);
  EXPECT_EQ(capture_.lastError(), std::nullopt);
}

}  // namespace
}  // namespace veloria::tests
