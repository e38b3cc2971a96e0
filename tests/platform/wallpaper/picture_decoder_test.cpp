#include "platform/linux/wallpaper/PictureDecoder.h"

#include <gmock/gmock.h>

#include <QColorSpace>
#include <QImage>
#include <QImageReader>

#include "Process.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

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
const QColor orange(255, 102, 51), navy(0, 51, 153);

class PictureDecoderTest : public testing::Test {
 protected:
  std::string save(const QImage& image, const std::string& name) {
    EXPECT_TRUE(image.save(QString::fromStdString(folder_.file(name)))) << name;
    return folder_.file(name);
  }

  void expectHalves(const std::string& file, QColor left, QColor right) {
    const auto pixels = pictures_.thumbnail(file);
    ASSERT_TRUE(pixels) << pixels.error();
    ASSERT_EQ(pixels->size(), side * side);
    for (const auto& [color, x] : {std::pair{left, side / 4}, {right, side * 3 / 4}}) {
      const ColorStop wanted{color.redF(), color.greenF(), color.blueF()};
      for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR((*pixels)[side * side / 2 + x][i], wanted[i], 0.02F) << file;
    }
  }

  void expectRefused(const std::string& file) { EXPECT_FALSE(pictures_.thumbnail(file)) << file; }
  TemporaryFolder folder_;
  PictureFile pictures_{decodePicture};
};

TEST_F(PictureDecoderTest, ReadsPicturesOfAnyShapeAndFormat) {
  for (const auto& [name, size, format] : {std::tuple{"wide.png", QSize(400, 100), QImage::Format_RGB32},
                                           {"large.jpg", QSize(1920, 1080), QImage::Format_RGB32},
                                           {"deep.png", QSize(2, 1), QImage::Format_RGBX64},
                                           {"palette.png", QSize(200, 80), QImage::Format_Indexed8}}) {
    expectHalves(save(twoColors(size, orange, navy, format), name), orange, navy);
  }
  const QColor half(200, 100, 50, 128), clear(255, 255, 255, 0);
  expectHalves(save(twoColors({100, 100}, half, clear, QImage::Format_ARGB32), "alpha.png"), QColor(100, 50, 25),
               Qt::black);
  QImage gamut = twoColors({100, 100}, orange, navy);
  gamut.setColorSpace(QColorSpace::SRgb);
  gamut.convertToColorSpace(QColorSpace::ProPhotoRgb);
  expectHalves(save(gamut, "gamut.png"), orange, navy);
}

TEST_F(PictureDecoderTest, RefusesAnythingElseWithoutWaiting) {
  ASSERT_EQ(::mkfifo(folder_.file("fifo.png").c_str(), 0600), 0);
  fs::create_symlink("loop.png", folder_.file("loop.png"));
  for (const std::string& file :
       {folder_.file("fifo.png"), folder_.file("loop.png"), folder_.file("missing.png"), folder_.path(),
        std::string("/dev/zero"), folder_.write("empty.png", ""), folder_.write("text.png", "no picture\n")}) {
    expectRefused(file);
  }
  // A portable pixmap's header with one row of pixels: the size is only claimed.
  for (const char* size : {"32769 1", "30000 30000", "100 0", "20000 20000"}) {
    expectRefused(folder_.write("claim.ppm", "P6\n" + std::string(size) + "\n255\n" + std::string(300, 'x')));
  }
  const std::string large = folder_.write("large.ppm", "P6 10 10 255\n" + std::string(300, 'x'));
  EXPECT_TRUE(pictures_.thumbnail(large));
  fs::resize_file(large, (std::uintmax_t{256} << 20) + 1);  // a hole, not disk space
  expectRefused(large);
}

TEST_F(PictureDecoderTest, DecodesAFileAgainOnlyIfItHasChanged) {
  const std::string file = save(twoColors({60, 60}, orange, navy), "a.bmp");
  int decoded = 0;
  PictureFile pictures([&](const auto& path) { return ++decoded, decodePicture(path); });
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(pictures.thumbnail(file));
  EXPECT_EQ(decoded, 1);
  fs::last_write_time(file, fs::last_write_time(file) + std::chrono::milliseconds(1));
  EXPECT_TRUE(pictures.thumbnail(file));
  EXPECT_EQ(decoded, 2);
}

std::string svg(const std::string& content, const std::string& width = "1920") {
  return R"(<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" width=")" + width +
         R"(" height="1080">)" + content + "</svg>";
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
  const auto showing = [&](const char* name) {
    return svg(R"(<image width="9" height="9" xlink:href=")" + folder_.file(name) + R"("/>)");
  };
  ASSERT_EQ(::mkfifo(folder_.file("pipe").c_str(), 0600), 0);
  std::string deep;
  for (int i = 0; i < 300'000; ++i) deep += "<g>";
  for (const auto& [name, content, problem] :
       {std::tuple{"itself.svg", showing("itself.svg"), "the decoder failed"},
        {"pipe.svg", showing("pipe"), "decoding takes too long"},
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
