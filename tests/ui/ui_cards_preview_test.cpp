// Previews as the software GPU really draws them.

#include <QImage>
#include <QVBoxLayout>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <set>
#include <thread>

#include "app/ShaderLibrary.h"
#include "gpu/recording/RecordingDevice.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "ui/cards/PresetGallery.h"
#include "ui/preview/PreviewStrip.h"
#include "ui_cards_fixture.h"

namespace veloria::tests {
namespace {

/// The validation layer slows a frame down several times over; one test has it.
PreviewGpu makeGpu(bool validation = false) {
  gpu::vulkan::VulkanOptions options;
  options.validation = validation;
  options.validationHandler = [](std::string_view text) { ADD_FAILURE() << "validation: " << text; };
  PreviewGpu gpu;
  gpu.device = gpu::vulkan::makeVulkanDevice(options);
  gpu.library = loadShaderLibrary(*gpu.device, {std::filesystem::path(VELORIA_SHADER_LIBRARY)});
  return gpu;
}

struct Light {
  double red = 0, green = 0, blue = 0;  ///< means, 0 to 255
  int brightest = 0;
  double total() const { return red + green + blue; }
};

Light lightOf(const QImage& picture) {
  Light light;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      const QColor color = picture.pixelColor(x, y);
      const double alpha = color.alphaF();
      light.red += color.red() * alpha;
      light.green += color.green() * alpha;
      light.blue += color.blue() * alpha;
      light.brightest = std::max(
          light.brightest, static_cast<int>(std::max({color.redF(), color.greenF(), color.blueF()}) * 255 * alpha));
    }
  }
  const double count = std::max(1, picture.width() * picture.height());
  light.red /= count;
  light.green /= count;
  light.blue /= count;
  return light;
}

/// The mean difference of two pictures of one size, 0 to 255.
double differenceOf(const QImage& a, const QImage& b) {
  double sum = 0;
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) {
      const QRgb p = a.pixel(x, y);
      const QRgb q = b.pixel(x, y);
      sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
    }
  }
  return sum / (3.0 * a.width() * a.height());
}

std::ptrdiff_t threadCount() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

class PreviewTest : public CardsFixture {
 protected:
  PreviewTest() {
    QObject::connect(&painter_, &PreviewPainter::frameDrawn, &context_, [this] { ++frames_; });
    QObject::connect(&painter_, &PreviewPainter::stillDrawn, &context_, [this] { ++stills_; });
    QObject::connect(&painter_, &PreviewPainter::failed, &context_, [this](const QString& why) { reason_ = why; });
  }

  std::unique_ptr<PreviewStrip> makeStrip() {
    auto strip = std::make_unique<PreviewStrip>(painter_, [this] {
      EXPECT_EQ(std::this_thread::get_id(), mainThread_);
      return config();
    });
    strip->resize(400, PreviewStrip::heightPoints);
    return strip;
  }

  const std::thread::id mainThread_ = std::this_thread::get_id();
  QObject context_;  ///< so that signals come to this thread
  std::atomic<int> devices_ = 0;
  PreviewPainter painter_{[this] {
    ++devices_;
    return makeGpu(validation_);
  }};
  bool validation_ = false;
  int frames_ = 0, stills_ = 0;
  QString reason_;
};

TEST_F(PreviewTest, theStripShowsLightThatMovesAndFollowsTheRecord) {
  validation_ = true;
  const auto strip = makeStrip();
  strip->show();
  ASSERT_TRUE(runUntil([&] { return frames_ > 20 && lightOf(strip->picture()).brightest > 60; }))
      << reason_.toStdString();
  EXPECT_EQ(strip->picture().size(), QSize(400, 48));

  const QImage before = strip->picture();
  ASSERT_TRUE(runUntil([&, from = frames_] { return frames_ > from + 15; }));
  EXPECT_GT(differenceOf(before, strip->picture()), 0.5);

  const auto paint = [&](ColorStop color) {
    editor_.change("customPalette", [&](NimbraConfig& c) {
      c.customPalette = Palette{"one", {4, color}};
      c.hueSpread = 0;
      c.colorCycle = 0;
    });
  };
  // The dye that is there already keeps its colour until it fades.
  paint({1, 0.1F, 0.1F});
  EXPECT_TRUE(runUntil([&] { return lightOf(strip->picture()).red > 2 * lightOf(strip->picture()).blue; }, 40000));
  paint({0.1F, 0.1F, 1});
  EXPECT_TRUE(runUntil([&] { return lightOf(strip->picture()).blue > 2 * lightOf(strip->picture()).red; }, 40000));

  const QImage shown = strip->grab().toImage();
  EXPECT_GT(lightOf(shown).brightest, 60) << "the picture is on the widget too";
}

TEST_F(PreviewTest, aHiddenStripDrawsNothingAndKeepsNoDevice) {
  const auto strip = makeStrip();
  const auto threads = threadCount();
  runFor(150);
  EXPECT_EQ(devices_, 0) << "nothing is made before it is seen";
  strip->show();
  ASSERT_TRUE(runUntil([&] { return frames_ > 2; }));
  EXPECT_EQ(devices_, 1);
  EXPECT_GT(threadCount(), threads + 1) << "a device has threads of its own";
  strip->hide();
  EXPECT_TRUE(runUntil([&] { return threadCount() <= threads + 1; })) << "all but the one that waits have ended";
  const int before = frames_;
  runFor(400);
  EXPECT_EQ(frames_, before);
  strip->show();
  ASSERT_TRUE(runUntil([&] { return frames_ > before + 2; }));
  EXPECT_EQ(devices_, 2) << "the first device had been let go";
  strip->setWindowState(Qt::WindowMinimized);
  runFor(300);
  const int minimised = frames_;
  runFor(300);
  EXPECT_EQ(frames_, minimised);
}

TEST_F(PreviewTest, presetPicturesAreDrawnOnceAndCanBeToldApart) {
  PresetPictures pictures(painter_);
  auto gallery = std::make_unique<PresetGallery>(editor_, pictures);
  gallery->resize(700, 500);
  runFor(100);
  EXPECT_EQ(devices_, 0);
  gallery->show();
  ASSERT_TRUE(runUntil([&] { return stills_ >= 2; }, 60000)) << reason_.toStdString();
  gallery->hide();  // in the middle of the work
  runFor(300);
  const int before = stills_;
  runFor(300);
  EXPECT_EQ(stills_, before);
  gallery->show();
  ASSERT_TRUE(runUntil([&] { return stills_ >= 7; }, 60000)) << reason_.toStdString();

  for (int i = 0; i < 7; ++i) {
    EXPECT_GT(lightOf(pictures.picture(i)).brightest, 60) << LookPreset::all().at(static_cast<std::size_t>(i)).name;
    for (int j = 0; j < i; ++j) {
      EXPECT_GT(differenceOf(pictures.picture(i), pictures.picture(j)), 8) << i << " and " << j;
    }
  }
  gallery.reset();
  PresetGallery again(editor_, pictures);
  again.show();
  EXPECT_EQ(child<Tile>(again, "Rave").picture(), pictures.picture(6)) << "kept from the first time";
  runFor(300);
  EXPECT_EQ(stills_, 7);
}

TEST_F(PreviewTest, picturesAreDrawnWhileTheStripRuns) {
  PresetPictures pictures(painter_);
  QWidget window;
  auto* column = new QVBoxLayout(&window);
  auto strip = makeStrip();
  column->addWidget(strip.get());
  column->addWidget(new PresetGallery(editor_, pictures));
  window.resize(500, 600);
  window.show();
  ASSERT_TRUE(runUntil([&] { return stills_ >= 7; }, 90000)) << reason_.toStdString();
  EXPECT_GT(frames_, 7) << "they take turns";
  EXPECT_EQ(devices_, 1);
  strip.reset();
}

TEST_F(PreviewTest, aPainterThatIsDestroyedAtWorkEndsCleanly) {
  for (const int wait : {0, 30, 200}) {
    PreviewPainter painter([] { return makeGpu(); });
    painter.drawFrame(NimbraConfig(), {400, 48}, 1);
    painter.drawStill({.id = 0, .config = {}, .pixels = {320, 80}});
    runFor(wait);
  }
}

const std::set<std::string> allFunctions{
    "k_advect_velocity", "k_curl",       "k_forces", "k_divergence", "k_jacobi", "k_project", "k_advect_dye",
    "k_clear",           "v_fullscreen", "f_nimbra", "f_down",       "f_blur",   "f_final"};

TEST_F(PreviewTest, withoutAGpuThereIsASentenceAndOneAttemptEachTime) {
  const std::vector<std::pair<const char*, PreviewGpuFactory>> ways{
      {"none", []() -> PreviewGpu { throw std::runtime_error("no driver at all"); }},
      {"null", [] { return PreviewGpu(); }},
      {"lost",
       [] {
         auto device = std::make_unique<gpu::recording::RecordingDevice>(allFunctions);
         PreviewGpu gpu;
         gpu.library = device->makeLibrary(std::as_bytes(std::span("library")));
         device->lose();
         gpu.device = std::move(device);
         return gpu;
       }},
      {"out of memory", [] {
         auto device = std::make_unique<gpu::recording::RecordingDevice>(allFunctions);
         PreviewGpu gpu;
         gpu.library = device->makeLibrary(std::as_bytes(std::span("library")));
         device->failures().makeTexture = true;
         gpu.device = std::move(device);
         return gpu;
       }}};
  for (const auto& [name, way] : ways) {
    SCOPED_TRACE(name);
    const PreviewGpuFactory& make = way;
    std::atomic<int> attempts = 0;
    std::atomic<bool> mended = false;
    PreviewPainter painter([&] {
      ++attempts;
      return mended ? makeGpu() : make();
    });
    int failures = 0;
    QObject::connect(&painter, &PreviewPainter::failed, &context_, [&] { ++failures; });
    PreviewStrip strip(painter, [] { return NimbraConfig(); });
    strip.show();
    EXPECT_TRUE(runUntil([&] { return failures == 1; }));
    runFor(300);
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(attempts, 1);
    EXPECT_TRUE(strip.picture().isNull());
    EXPECT_TRUE(strip.accessibleDescription().contains(QLatin1String("no preview")));
    EXPECT_GT(lightOf(strip.grab().toImage()).brightest, 200) << "the sentence is painted";
    strip.hide();
    runFor(50);
    mended = true;
    strip.show();
    EXPECT_TRUE(runUntil([&] { return !strip.picture().isNull(); })) << "asked again when it is seen again";
    EXPECT_TRUE(strip.accessibleDescription().isEmpty());
  }
}

TEST(PreviewPixels, keepTheShapeWithinTheLargestPicture) {
  const std::vector<std::tuple<QSize, double, QSize>> cases{
      {{400, 48}, 1, {400, 48}}, {{200, 48}, 1, {200, 48}}, {{800, 48}, 1, {400, 24}}, {{400, 48}, 2, {400, 48}},
      {{100, 48}, 2, {100, 48}}, {{2000, 1}, 1, {400, 1}},  {{0, 48}, 1, {}},          {{400, 48}, NAN, {}}};
  for (const auto& [points, ratio, pixels] : cases) EXPECT_EQ(previewPixels(points, ratio), pixels);
}

}  // namespace
}  // namespace veloria::tests
