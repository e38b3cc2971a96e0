// Starting, stopping and failing, with a stream that does what the test says and a recording device.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <set>
#include <vector>

#include "gpu/recording/RecordingDevice.h"
#include "render/MenuBarCapture.h"

namespace veloria::tests {
namespace {

using gpu::recording::CallKind;

// Read once by the log, so it is set before anything asks.
[[maybe_unused]] const int diagnosticsOn = setenv("NIMBRA_DEBUG", "1", 1);

class ScriptedStream final : public BarCaptureStream {
 public:
  void start(const BarRegion& wanted, BarCaptureHandlers given) override {
    ++starts;
    region = wanted;
    handlers = std::move(given);
    if (failsAtOnce) handlers.failed("no way");
  }
  void stop() override {
    ++stops;
    handlers = {};
  }
  void show(gpu::Size size, unsigned char value) const {
    const std::vector<std::byte> rows(std::size_t{size.width} * size.height * 4, std::byte{value});
    handlers.picture({size, rows});
  }
  int starts = 0;
  int stops = 0;
  bool failsAtOnce = false;
  BarRegion region;
  BarCaptureHandlers handlers;
};

class MenuBarCaptureTest : public testing::Test {
 protected:
  std::byte firstByteShown() {
    const auto texture = capture_.box()->stored();
    std::vector<std::byte> bytes(texture->byteCount());
    texture->read(bytes);
    return bytes.front();
  }

  gpu::recording::RecordingDevice device_{std::set<std::string>{}};
  ScriptedStream stream_;
  MenuBarCapture capture_{device_, stream_};
  static constexpr Rect strip{0, 0, 1920, 32};
  static constexpr gpu::Size size{1920, 32};
};

TEST_F(MenuBarCaptureTest, startsOnlyWhenSomethingDiffers) {
  EXPECT_FALSE(capture_.isRunning());
  capture_.start(7, strip, 1);
  capture_.start(7, strip, 1);
  EXPECT_TRUE(capture_.isRunning());
  EXPECT_EQ(stream_.starts, 1);
  EXPECT_EQ(stream_.region, (BarRegion{7, strip, 1}));

  const std::vector<BarRegion> others{{8, strip, 1}, {8, {0, 0, 1920, 64}, 1}, {8, {0, 0, 1920, 64}, 2}};
  for (const BarRegion& other : others) {
    const int before = stream_.starts;
    stream_.show(size, 1);
    capture_.start(other.displayID, other.rect, other.scale);
    EXPECT_EQ(capture_.box()->stored(), nullptr) << "of another region";
    EXPECT_EQ(stream_.starts, before + 1);
    EXPECT_EQ(stream_.region, other);
    EXPECT_EQ(capture_.currentDisplayID(), other.displayID);
    EXPECT_EQ(capture_.currentRect(), other.rect);
  }
}

TEST_F(MenuBarCaptureTest, theNewestPictureIsInTheBoxAndStopEmptiesIt) {
  const auto box = capture_.box();
  capture_.start(7, strip, 1);
  EXPECT_EQ(box->stored(), nullptr);
  for (unsigned char value = 1; value <= 9; ++value) {
    stream_.show(size, value);
    ASSERT_NE(box->stored(), nullptr);
    EXPECT_EQ(box->stored()->format(), gpu::PixelFormat::bgra8Unorm);
    EXPECT_EQ(box->stored()->size(), size);
    EXPECT_EQ(firstByteShown(), std::byte{value});
  }
  EXPECT_EQ(capture_.frameCount(), 9);
  capture_.stop();
  EXPECT_FALSE(capture_.isRunning());
  EXPECT_EQ(box->stored(), nullptr);
  capture_.start(7, strip, 1);
  stream_.show(size, 42);
  EXPECT_EQ(capture_.box(), box) << "renderers would have to be told";
  EXPECT_EQ(firstByteShown(), std::byte{42});
}

TEST_F(MenuBarCaptureTest, aTextureIsNotWrittenWhileItOrTheNextOneIsShown) {
  capture_.start(7, strip, 1);
  std::vector<const gpu::Texture*> shown;
  for (int i = 0; i < 12; ++i) {
    stream_.show(size, 1);
    shown.push_back(capture_.box()->stored().get());
    const auto lastThree = shown.end() - std::min<std::ptrdiff_t>(3, std::ssize(shown));
    EXPECT_EQ(std::count(lastThree, shown.end(), shown.back()), 1);
  }
  EXPECT_LE(device_.log().count(CallKind::makeTexture), 4U);
  for (int i = 0; i < 4; ++i) stream_.show({1920, 64}, 1);
  EXPECT_EQ(capture_.box()->stored()->size(), (gpu::Size{1920, 64}));
  EXPECT_LE(device_.log().count(CallKind::makeTexture), 8U);
}

TEST_F(MenuBarCaptureTest, picturesThatCantBeTexturesAreDropped) {
  capture_.start(7, strip, 1);
  stream_.show(size, 5);
  const std::array<std::byte, 16> few{};
  const std::vector<gpu::Size> bad{{0, 0}, {2, 1}, {4, 4}, {0, 4}, {0xFFFFFFFF, 0xFFFFFFFF}, {20000, 1}};
  for (const gpu::Size& each : bad) stream_.handlers.picture({each, few});
  device_.failures().makeTexture = true;
  stream_.show({64, 32}, 9);
  EXPECT_EQ(capture_.frameCount(), 1);
  EXPECT_EQ(capture_.box()->stored()->size(), size);
  EXPECT_EQ(firstByteShown(), std::byte{5});
  device_.failures().makeTexture = false;
  stream_.show({64, 32}, 9);
  EXPECT_EQ(firstByteShown(), std::byte{9});
}

TEST_F(MenuBarCaptureTest, texturesOfTheSystemsAreShownAsTheyAreAndGivenBackInTime) {
  capture_.start(7, strip, 1);
  const gpu::TextureDescriptor wanted{.format = gpu::PixelFormat::bgra8Unorm, .size = size, .label = "captured"};
  std::vector<std::weak_ptr<gpu::Texture>> given;
  for (int i = 0; i < 5; ++i) {
    const auto texture = device_.makeTexture(wanted);
    given.push_back(texture);
    stream_.handlers.texture(texture);
    EXPECT_EQ(capture_.box()->stored(), texture);
  }
  EXPECT_EQ(capture_.frameCount(), 5);
  EXPECT_FALSE(given[4].expired());
  EXPECT_FALSE(given[3].expired()) << "a frame in flight may still read it";
  EXPECT_TRUE(given[2].expired()) << "the system has only a few";
  capture_.stop();
  EXPECT_EQ(capture_.box()->stored(), nullptr);
  for (const auto& texture : given) EXPECT_TRUE(texture.expired());
}

TEST_F(MenuBarCaptureTest, texturesThatCantBeReadAsAPictureAreDropped) {
  capture_.start(7, strip, 1);
  using gpu::TextureUsage;
  stream_.handlers.texture(device_.makeTexture({.format = gpu::PixelFormat::rgba16Float, .size = size, .label = {}}));
  stream_.handlers.texture(device_.makeTexture(
      {.format = gpu::PixelFormat::bgra8Unorm, .size = size, .usage = TextureUsage::renderTarget, .label = {}}));
  EXPECT_EQ(capture_.box()->stored(), nullptr);
  EXPECT_EQ(capture_.frameCount(), 0);
}

TEST_F(MenuBarCaptureTest, aFailureIsKeptAndTheNextStartTriesAgain) {
  stream_.failsAtOnce = true;
  capture_.start(7, strip, 1);
  EXPECT_FALSE(capture_.isRunning());
  EXPECT_EQ(capture_.lastError(), "no way");
  stream_.failsAtOnce = false;
  capture_.start(7, strip, 1);
  EXPECT_TRUE(capture_.isRunning()) << "nothing differs, but it did not run";
  EXPECT_EQ(stream_.starts, 2);
  EXPECT_EQ(capture_.lastError(), "no way") << "until it has really started";
  stream_.handlers.started(size);
  EXPECT_EQ(capture_.lastError(), std::nullopt);
  stream_.show(size, 3);
  stream_.handlers.failed("the compositor ended");
  EXPECT_FALSE(capture_.isRunning());
  EXPECT_EQ(capture_.lastError(), "the compositor ended");
  EXPECT_EQ(capture_.box()->stored(), nullptr) << "old text would stay in the light";
  EXPECT_EQ(stream_.starts, 2) << "nothing is tried again by itself";
}

TEST_F(MenuBarCaptureTest, diagnosticsTellOfStartAndFailure) {
  capture_.start(7, {0, 0, 1512.5, 37}, 2);
  testing::internal::CaptureStderr();
  stream_.handlers.started({3025, 74});
  stream_.handlers.failed("it broke");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[nimbra] capture started rect=(0.0, 0.0, 1512.5, 37.0) 3025x74\n[nimbra] capture failed: it broke\n");
}

}  // namespace
}  // namespace veloria::tests
