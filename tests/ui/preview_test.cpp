// Previews as the CPU's back end and the software GPU really draw them.

#include <atomic>
#include <filesystem>
#include <thread>

#include "UiFixture.h"
#include "app/ShaderLibrary.h"
#include "gpu/cpu/CpuFactory.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "ui/cards/PresetGallery.h"
#include "ui/preview/PreviewStrip.h"

namespace veloria::gpu::cpu {
extern const CompiledLibrary renderCpuLibrary;
}

namespace veloria::tests {
namespace {

std::unique_ptr<gpu::Device> makeVulkanDevice() {
  gpu::vulkan::VulkanOptions options;
  options.validation = true;
  options.validationHandler = [](std::string_view text) { ADD_FAILURE() << "validation: " << text; };
  return gpu::vulkan::makeVulkanDevice(options);
}

/// Vulkan with its validation layer is slow; one test has it.
PreviewGpu makeGpu(bool vulkan = false) {
  PreviewGpu gpu;
  gpu.device = vulkan ? makeVulkanDevice() : gpu::cpu::makeCpuDevice(gpu::cpu::renderCpuLibrary, {});
  gpu.library = loadShaderLibrary(*gpu.device, {std::filesystem::path(VELORIA_SHADER_LIBRARY)});
  return gpu;
}

/// The mean difference of two pictures of one size, 0 to 255.
double differenceOf(const QImage& a, const QImage& b) {
  double sum = 0;
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) {
      const QRgb p = qPremultiply(a.pixel(x, y)), q = qPremultiply(b.pixel(x, y));
      sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
    }
  }
  return sum / (3.0 * a.width() * a.height());
}

bool hasLight(const QImage& picture) {
  QImage black(picture.size(), QImage::Format_RGB32);
  black.fill(Qt::black);
  return differenceOf(picture, black) > 4;
}

class PreviewTest : public UiFixture {
 protected:
  PreviewTest() {
    QObject::connect(&painter_, &PreviewPainter::frameDrawn, &context_, [this] { ++frames_; });
    QObject::connect(&painter_, &PreviewPainter::stillDrawn, &context_, [this] { ++stills_; });
    QObject::connect(&painter_, &PreviewPainter::failed, &context_,
                     [this](auto& why) { ADD_FAILURE() << why.toStdString(); });
    strip_.resize(400, PreviewStrip::heightPoints);
  }
  bool drawsFrames(int count) {
    return runUntil([this, until = frames_ + count] { return frames_ >= until; });
  }

  const std::thread::id mainThread_ = std::this_thread::get_id();
  QObject context_;  ///< so that signals come to this thread
  std::atomic<int> devices_ = 0;
  bool vulkan_ = false;
  PreviewPainter painter_{[this] {
    ++devices_;
    return makeGpu(vulkan_);
  }};
  PreviewStrip strip_{painter_, [this] {
                        EXPECT_EQ(std::this_thread::get_id(), mainThread_);
                        return config();
                      }};
  int frames_ = 0, stills_ = 0;
};

TEST_F(PreviewTest, TheStripShowsLightThatMovesAndFollowsTheRecord) {
  strip_.show();
  ASSERT_TRUE(runUntil([&] { return frames_ > 20 && hasLight(strip_.picture()); }));
  const QImage before = strip_.picture();
  ASSERT_TRUE(drawsFrames(15));
  EXPECT_GT(differenceOf(before, strip_.picture()), 0.5);
  // Dye keeps its colour until it fades, soon here.
  editor_.change("customPalette", [&](NimbraConfig& c) {
    c.customPalette = Palette{"one", {4, {1, 0.1F, 0.1F}}};
    c.hueSpread = c.colorCycle = 0;
    c.dyeDissipation = 0.95;
  });
  EXPECT_TRUE(runUntil(
      [&] {
        const QRgb mean = strip_.picture().scaled(1, 1, {}, Qt::SmoothTransformation).pixel(0, 0);
        return qRed(mean) > 2 * qBlue(mean);
      },
      20000));
  EXPECT_TRUE(hasLight(strip_.grab().toImage())) << "the picture is on the widget too";
}

TEST_F(PreviewTest, AHiddenStripDrawsNothingAndKeepsNoDevice) {
  vulkan_ = true;
  QTest::qWait(100);
  EXPECT_EQ(devices_, 0) << "nothing is made before it is seen";
  strip_.show();
  ASSERT_TRUE(drawsFrames(3));
  EXPECT_EQ(devices_, 1);
  strip_.hide();
  QTest::qWait(100);
  const int before = frames_;
  QTest::qWait(200);
  EXPECT_EQ(frames_, before);
  strip_.show();
  ASSERT_TRUE(drawsFrames(3));
  EXPECT_EQ(devices_, 2) << "the first device had been let go";
}

TEST_F(PreviewTest, PresetPicturesAreDrawnOnceBetweenTheFramesAndCanBeToldApart) {
  PresetPictures pictures(painter_);
  auto gallery = std::make_unique<PresetGallery>(editor_, pictures);
  strip_.show();
  gallery->show();
  ASSERT_TRUE(runUntil([&] { return stills_ >= 2; }, 60000));
  EXPECT_GT(frames_, 0) << "they take turns";
  strip_.hide();
  gallery->hide();  // in the middle of the work
  QTest::qWait(200);
  gallery->show();
  ASSERT_TRUE(runUntil([&] { return stills_ >= 7; }, 60000));
  for (int i = 0; i < 7; ++i) {
    EXPECT_TRUE(hasLight(pictures.picture(i))) << i;
    for (int j = 0; j < i; ++j) EXPECT_GT(differenceOf(pictures.picture(i), pictures.picture(j)), 8) << i << " " << j;
  }
  gallery = std::make_unique<PresetGallery>(editor_, pictures);
  gallery->show();
  QTest::qWait(100);
  EXPECT_EQ(stills_, 7) << "kept from the first time";
}

TEST_F(PreviewTest, APainterThatIsDestroyedAtWorkEndsCleanly) {
  for (const int wait : {0, 30, 150}) {
    PreviewPainter painter([] { return makeGpu(); });
    painter.drawFrame(NimbraConfig(), {400, 48}, 1);
    painter.drawStill({.id = 0, .config = {}, .pixels = {320, 80}});
    QTest::qWait(wait);
  }
}

TEST_F(PreviewTest, WithoutAGpuThereIsASentenceAndOneAttemptEachTime) {
  std::atomic<int> attempts = 0;
  std::atomic<bool> mended = false;
  PreviewPainter painter([&] {
    ++attempts;
    return mended ? makeGpu() : throw std::runtime_error("no driver at all");
  });
  PreviewStrip strip(painter, [] { return NimbraConfig(); });
  strip.show();
  EXPECT_TRUE(runUntil([&] { return !strip.accessibleDescription().isEmpty(); }));
  QTest::qWait(150);
  EXPECT_EQ(attempts, 1);
  EXPECT_TRUE(hasLight(strip.grab().toImage())) << "the sentence is painted";
  strip.hide();
  QTest::qWait(50);
  mended = true;
  strip.show();
  EXPECT_TRUE(runUntil([&] { return !strip.picture().isNull(); })) << "asked again when it is seen again";
  EXPECT_TRUE(strip.accessibleDescription().isEmpty());
}

}  // namespace
}  // namespace veloria::tests
