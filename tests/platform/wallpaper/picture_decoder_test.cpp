#include "platform/linux/wallpaper/PictureDecoder.h"

#include <gmock/gmock.h>

#include <QColorSpace>
#include <QImage>
#include <QImageReader>
#include <cmath>
#include <fstream>
#include <iterator>

#include "Process.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using Pixels = DesktopPicture::Pixels;

constexpr std::size_t side = DesktopPicture::side;

/// Left half and right half in one color each.
QImage twoColors(const QSize& size, QColor left, QColor right, QImage::Format format = QImage::Format_RGB32) {
  QImage image(size, QImage::Format_ARGB32);
  for (int y = 0; y < size.height(); ++y) {
    for (int x = 0; x < size.width(); ++x) image.setPixelColor(x, y, x < size.width() / 2 ? left : right);
  }
  return image.convertToFormat(format);
}

// Both are in the fixed palette that indexed pictures are made with.
const QColor orange(255, 102, 51);
const QColor navy(0, 51, 153);

class PictureDecoderTest : public testing::Test {
 protected:
  std::string save(const QImage& image, const std::string& name) {
    EXPECT_TRUE(image.save(QString::fromStdString(folder_.file(name)))) << name;
    return folder_.file(name);
  }

  static std::string bytesOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  Result<Pixels> thumbnail(const std::string& file) { return pictures_.thumbnail(file); }

  void expectHalves(const std::string& file, QColor left, QColor right) {
    const auto pixels = thumbnail(file);
    ASSERT_TRUE(pixels) << pixels.error();
    ASSERT_EQ(pixels->size(), side * side);
    for (const auto& [color, x] : {std::pair{left, side / 4}, {right, side * 3 / 4}}) {
      const ColorStop wanted{color.redF(), color.greenF(), color.blueF()};
      for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR((*pixels)[side * side / 2 + x][i], wanted[i], 0.02F) << file;
    }
  }

  void expectRefused(const std::string& file) { EXPECT_FALSE(thumbnail(file)) << file; }

  TemporaryFolder folder_;
  PictureFile pictures_{decodePicture};
};

TEST_F(PictureDecoderTest, ReadsPicturesOfAnyShapeAndFormat) {
  for (const auto& [name, size, format] : {std::tuple{"wide.png", QSize(400, 100), QImage::Format_RGB32},
                                           {"tall.jpg", QSize(120, 700), QImage::Format_RGB32},
                                           {"large.jpg", QSize(1920, 1080), QImage::Format_RGB32},
                                           {"deep.png", QSize(200, 100), QImage::Format_RGBX64},
                                           {"palette.png", QSize(200, 80), QImage::Format_Indexed8},
                                           {"plain.bmp", QSize(100, 100), QImage::Format_RGB32},
                                           {"plain.ppm", QSize(100, 100), QImage::Format_RGB32},
                                           {"tiny.png", QSize(2, 1), QImage::Format_RGB32}}) {
    expectHalves(save(twoColors(size, orange, navy, format), name), orange, navy);
  }
  const QColor light(200, 200, 200), dark(40, 40, 40);
  expectHalves(save(twoColors({200, 100}, light, dark, QImage::Format_Grayscale8), "gray.jpg"), light, dark);
  expectHalves(save(twoColors({200, 100}, Qt::white, Qt::black, QImage::Format_Mono), "mono.png"), Qt::white,
               Qt::black);
  const QColor half(200, 100, 50, 128), clear(255, 255, 255, 0);
  expectHalves(save(twoColors({100, 100}, half, clear, QImage::Format_ARGB32), "alpha.png"), QColor(100, 50, 25),
               Qt::black);
  QImage gamut = twoColors({100, 100}, orange, navy);
  gamut.setColorSpace(QColorSpace::SRgb);
  gamut.convertToColorSpace(QColorSpace::ProPhotoRgb);
  ASSERT_GT(std::abs(gamut.pixelColor(0, 0).red() - orange.red()), 20) << "the test's picture must differ as stored";
  expectHalves(save(gamut, "gamut.png"), orange, navy);
  QImage stripes(960, 960, QImage::Format_RGB32);
  for (int i = 0; i < 960 * 960; ++i) stripes.setPixelColor(i % 960, i / 960, i % 2 == 0 ? Qt::white : Qt::black);
  for (const char* name : {"stripes.png", "stripes.jpg"}) {
    EXPECT_NEAR(thumbnail(save(stripes, name))->front()[0], 0.5F, 0.05F) << name;
  }
}

TEST_F(PictureDecoderTest, ReadsPrintersPictures) {
  const std::string rgb = save(twoColors({200, 100}, orange, navy), "rgb.png");
  const auto made = runProcess("/usr/bin/env", {"convert", rgb, "-colorspace", "CMYK", folder_.file("printer.jpg")});
  if (made.exitCode != 0) GTEST_SKIP() << "no CMYK picture: ImageMagick's convert is missing: " << made.errors;
  expectHalves(folder_.file("printer.jpg"), orange, navy);
}

TEST_F(PictureDecoderTest, RefusesAnythingElseWithoutWaiting) {
  ASSERT_EQ(::mkfifo(folder_.file("fifo.png").c_str(), 0600), 0);
  fs::create_symlink("loop.png", folder_.file("loop.png"));
  for (const std::string& file :
       {folder_.file("fifo.png"), folder_.file("loop.png"), folder_.file("missing.png"), folder_.path(),
        std::string("/dev/zero"), std::string(), folder_.write("empty.png", ""),
        folder_.write("text.png", "no picture\n"), std::string("/proc/self/mem")}) {
    expectRefused(file);
  }
  std::string png = bytesOf(save(twoColors({300, 300}, orange, navy), "good.png"));
  const std::string jpg = bytesOf(save(twoColors({300, 300}, orange, navy), "good.jpg"));
  for (const std::size_t kept : {4U, 20U, 60U}) {
    expectRefused(folder_.write("cut.png", png.substr(0, kept)));
    expectRefused(folder_.write("cut.jpg", jpg.substr(0, kept)));
  }
  png[20] = static_cast<char>(png[20] ^ 0x55);  // the height, which its checksum covers
  expectRefused(folder_.write("sum.png", png));
  // A portable pixmap's header with one row of pixels: the size is only claimed.
  for (const char* size : {"32769 1", "1 2000000000", "30000 30000", "100 0", "20000 20000"}) {
    expectRefused(folder_.write("claim.ppm", "P6\n" + std::string(size) + "\n255\n" + std::string(300, 'x')));
  }
  const std::string large = folder_.write("large.ppm", "P6 10 10 255\n" + std::string(300, 'x'));
  EXPECT_TRUE(thumbnail(large));
  fs::resize_file(large, (std::uintmax_t{256} << 20) + 1);  // a hole, not disk space
  expectRefused(large);
}

TEST_F(PictureDecoderTest, DecodesAFileAgainOnlyIfItHasChanged) {
  const std::string file = save(twoColors({60, 60}, orange, navy), "a.bmp");
  const auto written = fs::last_write_time(file);
  const auto first = thumbnail(file);
  ASSERT_TRUE(first);
  // Other pixels under the same size and time.
  const std::string other = bytesOf(save(twoColors({60, 60}, navy, orange), "b.bmp"));
  ASSERT_EQ(other.size(), fs::file_size(file));
  std::fstream(file, std::ios::in | std::ios::out | std::ios::binary) << other;
  fs::last_write_time(file, written);
  EXPECT_EQ(*thumbnail(file), *first);
  fs::last_write_time(file, written + std::chrono::milliseconds(1));
  expectHalves(file, navy, orange);
  expectRefused(folder_.file("missing.bmp"));
  expectHalves(file, navy, orange);
}

std::string svg(const std::string& content, const std::string& width = "1920") {
  return R"(<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" width=")" + width +
         R"(" height="1080">)" + content + "</svg>";
}

std::string showing(const std::string& file) {
  return svg(R"(<image width="9" height="9" xlink:href=")" + file + R"("/>)");
}

TEST_F(PictureDecoderTest, AProcessOfItsOwnSurvivesPicturesThatHarmTheirReader) {
  if (!QImageReader::supportedImageFormats().contains("svg")) GTEST_SKIP() << "no SVG reader: libqt6svg6 is missing";
  const auto pixels = decodePictureWith(
      VELORIA_BINARY, folder_.write("default.svg", svg(R"(<rect width="960" height="1080" fill="#ff6633"/>
      <rect x="960" width="960" height="1080" fill="#003399"/><text x="900" y="1000">Debian</text>)")));
  ASSERT_TRUE(pixels) << pixels.error();
  ASSERT_EQ(pixels->size(), side * side);
  EXPECT_EQ(pixels->front(), (ColorStop{1, 0.4F, 0.2F}));
  EXPECT_EQ(pixels->back(), (ColorStop{0, 0.2F, 0.6F}));
  const std::string pipe = folder_.file("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::string deep;
  for (int i = 0; i < 300'000; ++i) deep += "<g>";
  for (const auto& [name, content, problem] :
       {std::tuple{"itself.svg", showing(folder_.file("itself.svg")), "the decoder failed"},
        {"pipe.svg", showing(pipe), "decoding takes too long"},
        {"vast.svg", svg("", "2000000000"), "too large"},
        {"deep.svg", svg(deep), ""},
        {"new.heic", std::string("no picture"), "no reader for .heic pictures is installed"}}) {
    const auto refused = decodePictureWith(VELORIA_BINARY, folder_.write(name, content), 3);
    ASSERT_FALSE(refused) << name;
    EXPECT_THAT(refused.error(), HasSubstr(problem)) << name;
  }
}

}  // namespace
}  // namespace veloria::tests
