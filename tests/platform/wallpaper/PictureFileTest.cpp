#include "platform/linux/wallpaper/PictureFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QColorSpace>
#include <QImage>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "Process.h"
#include "platform/linux/wallpaper/PictureDecoder.h"

namespace veloria {
namespace {

namespace fs = std::filesystem;

using Pixels = DesktopPicture::Pixels;

constexpr std::size_t side = DesktopPicture::side;

/// Left half and right half in one colour each.
QImage twoColours(const QSize& size, QColor left, QColor right, QImage::Format format = QImage::Format_RGB32) {
  QImage image(size, QImage::Format_ARGB32);
  for (int y = 0; y < size.height(); ++y) {
    for (int x = 0; x < size.width(); ++x) image.setPixelColor(x, y, x < size.width() / 2 ? left : right);
  }
  return image.convertToFormat(format);
}

/// A pixel in the middle of one half of a thumbnail.
const ColorStop& leftOf(const Pixels& pixels) {
  return pixels.at(side * side / 2 + side / 4);
}
const ColorStop& rightOf(const Pixels& pixels) {
  return pixels.at(side * side / 2 + side * 3 / 4);
}

MATCHER_P(IsNear, color, "") {
  bool near = true;
  const ColorStop wanted{color.redF(), color.greenF(), color.blueF()};
  for (std::size_t i = 0; i < 3; ++i) near = near && std::fabs(arg[i] - wanted[i]) < 0.02F;
  return near;
}

class PictureFileTest : public testing::Test {
 protected:
  std::string save(const QImage& image, const std::string& name) {
    EXPECT_TRUE(image.save(QString::fromStdString(folder_.file(name)))) << name;
    return folder_.file(name);
  }

  std::string bytesOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  static std::optional<Pixels> thumbnail(const std::string& file, PictureFile pictures = PictureFile(decodePicture)) {
    auto pixels = pictures.thumbnail(file);
    return pixels ? std::optional(*std::move(pixels)) : std::nullopt;
  }

  static void expectHalves(const std::string& file, QColor left, QColor right) {
    const auto pixels = thumbnail(file);
    ASSERT_TRUE(pixels) << file;
    ASSERT_EQ(pixels->size(), side * side);
    EXPECT_THAT(leftOf(*pixels), IsNear(left)) << file;
    EXPECT_THAT(rightOf(*pixels), IsNear(right)) << file;
  }

  tests::TemporaryFolder folder_;
};

// Both are in the fixed palette that indexed pictures are made with.
const QColor orange(255, 102, 51);
const QColor navy(0, 51, 153);

TEST_F(PictureFileTest, ReadsPicturesOfAnyShapeAndFormat) {
  struct Case {
    const char* name;
    QSize size;
    QImage::Format format;
  };
  const std::vector<Case> cases{
      {"wide.png", {400, 100}, QImage::Format_RGB32},      {"tall.jpg", {120, 700}, QImage::Format_RGB32},
      {"large.jpg", {1920, 1080}, QImage::Format_RGB32},   {"deep.png", {200, 100}, QImage::Format_RGBX64},
      {"palette.png", {200, 80}, QImage::Format_Indexed8}, {"plain.bmp", {100, 100}, QImage::Format_RGB32},
      {"plain.ppm", {100, 100}, QImage::Format_RGB32},     {"tiny.png", {2, 1}, QImage::Format_RGB32},
  };
  for (const Case& c : cases) expectHalves(save(twoColours(c.size, orange, navy, c.format), c.name), orange, navy);
}

TEST_F(PictureFileTest, ReadsGreyAndPrintersPictures) {
  const QColor light(200, 200, 200);
  const QColor dark(40, 40, 40);
  expectHalves(save(twoColours({200, 100}, light, dark, QImage::Format_Grayscale8), "grey.jpg"), light, dark);
  expectHalves(save(twoColours({200, 100}, Qt::white, Qt::black, QImage::Format_Mono), "mono.png"), Qt::white,
               Qt::black);
  const std::string rgb = save(twoColours({200, 100}, orange, navy), "rgb.png");
  const auto made =
      tests::runProcess("/usr/bin/env", {"convert", rgb, "-colorspace", "CMYK", folder_.file("printer.jpg")});
  if (made.exitCode != 0) GTEST_SKIP() << "no CMYK picture: ImageMagick's convert is missing: " << made.errors;
  expectHalves(folder_.file("printer.jpg"), orange, navy);
}

TEST_F(PictureFileTest, LaysTransparencyOverBlack) {
  const std::string file = save(
      twoColours({100, 100}, QColor(200, 100, 50, 128), QColor(255, 255, 255, 0), QImage::Format_ARGB32), "alpha.png");
  expectHalves(file, QColor(100, 50, 25), Qt::black);
}

TEST_F(PictureFileTest, ConvertsTheFilesColourSpace) {
  QImage image = twoColours({100, 100}, orange, navy);
  image.setColorSpace(QColorSpace::SRgb);
  image.convertToColorSpace(QColorSpace::ProPhotoRgb);
  ASSERT_GT(std::abs(image.pixelColor(0, 0).red() - orange.red()), 20) << "the test's picture must differ as stored";
  expectHalves(save(image, "wide-gamut.png"), orange, navy);
}

TEST_F(PictureFileTest, AveragesDetail) {
  QImage stripes(960, 960, QImage::Format_RGB32);
  for (int y = 0; y < stripes.height(); ++y) {
    for (int x = 0; x < stripes.width(); ++x) stripes.setPixelColor(x, y, x % 2 == 0 ? Qt::white : Qt::black);
  }
  for (const char* name : {"stripes.png", "stripes.jpg"}) {
    const auto pixels = thumbnail(save(stripes, name));
    ASSERT_TRUE(pixels);
    EXPECT_NEAR(leftOf(*pixels)[0], 0.5F, 0.05F) << name;
  }
}

TEST_F(PictureFileTest, RefusesWhatIsNoPictureWithoutWaiting) {
  ASSERT_EQ(::mkfifo(folder_.file("fifo.png").c_str(), 0600), 0);
  fs::create_symlink("loop.png", folder_.file("loop.png"));
  const std::vector<std::string> files{folder_.file("fifo.png"),
                                       folder_.file("loop.png"),
                                       folder_.file("missing.png"),
                                       folder_.path(),
                                       "/dev/zero",
                                       "/dev/tty",
                                       "",
                                       folder_.write("empty.png", ""),
                                       folder_.write("text.png", "no picture\n"),
                                       "/proc/self/mem",
                                       "/proc/self/status"};
  for (const std::string& file : files) EXPECT_EQ(thumbnail(file), std::nullopt) << file;
}

TEST_F(PictureFileTest, RefusesDamagedPictures) {
  const std::string png = bytesOf(save(twoColours({300, 300}, orange, navy), "good.png"));
  const std::string jpg = bytesOf(save(twoColours({300, 300}, orange, navy), "good.jpg"));
  for (const std::size_t kept : std::initializer_list<std::size_t>{4, 8, 20, 33, 60}) {
    EXPECT_EQ(thumbnail(folder_.write("cut.png", png.substr(0, kept))), std::nullopt) << kept;
    EXPECT_EQ(thumbnail(folder_.write("cut.jpg", jpg.substr(0, kept))), std::nullopt) << kept;
  }
  std::string wrongSum = png;
  wrongSum[20] = static_cast<char>(wrongSum[20] ^ 0x55);  // the height, which its checksum covers
  EXPECT_EQ(thumbnail(folder_.write("sum.png", wrongSum)), std::nullopt);
}

/// A portable pixmap's header with one row of pixels: the size is only claimed.
std::string claimingPicture(int width, int height) {
  return "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n" + std::string(300, 'x');
}

TEST_F(PictureFileTest, RefusesAbsurdSizes) {
  EXPECT_EQ(thumbnail(folder_.write("wide.ppm", claimingPicture(32769, 1))), std::nullopt);
  EXPECT_EQ(thumbnail(folder_.write("tall.ppm", claimingPicture(1, 2'000'000'000))), std::nullopt);
  EXPECT_EQ(thumbnail(folder_.write("area.ppm", claimingPicture(30000, 30000))), std::nullopt);
  EXPECT_EQ(thumbnail(folder_.write("flat.ppm", claimingPicture(100, 0))), std::nullopt);
  EXPECT_EQ(thumbnail(folder_.write("memory.ppm", claimingPicture(20000, 20000))), std::nullopt);

  const std::string large = folder_.write("large.ppm", "P6 10 10 255\n" + std::string(300, 'x'));
  EXPECT_TRUE(thumbnail(large));
  fs::resize_file(large, (std::uintmax_t{256} << 20) + 1);  // a hole, not disk space
  EXPECT_EQ(thumbnail(large), std::nullopt);
}

TEST_F(PictureFileTest, ReadsAFileAgainOnlyWhenItHasChanged) {
  const std::string file = save(twoColours({60, 60}, orange, navy, QImage::Format_RGB32), "a.bmp");
  const auto size = fs::file_size(file);
  const auto written = fs::last_write_time(file);
  PictureFile pictures(decodePicture);
  const auto first = pictures.thumbnail(file);
  ASSERT_TRUE(first);
  EXPECT_THAT(leftOf(*first), IsNear(orange));

  // Other pixels under the same size and time: only a reader that looks again can tell.
  save(twoColours({60, 60}, navy, orange, QImage::Format_RGB32), "b.bmp");
  const std::string other = bytesOf(folder_.file("b.bmp"));
  ASSERT_EQ(other.size(), size);
  std::fstream(file, std::ios::in | std::ios::out | std::ios::binary) << other;
  fs::last_write_time(file, written);
  EXPECT_EQ(*pictures.thumbnail(file), *first);

  fs::last_write_time(file, written + std::chrono::milliseconds(1));
  const auto changed = pictures.thumbnail(file);
  ASSERT_TRUE(changed);
  EXPECT_THAT(leftOf(*changed), IsNear(navy));

  EXPECT_FALSE(pictures.thumbnail(folder_.file("missing.bmp")));
  EXPECT_EQ(*pictures.thumbnail(file), *changed);
}

}  // namespace
}  // namespace veloria
