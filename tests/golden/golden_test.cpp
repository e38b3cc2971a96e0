// A few pictures of the program, compared with pictures that were looked at and kept. README.md says how to renew them.

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "Process.h"

namespace veloria::tests {
namespace {

// The tolerance. Another GPU, driver or compiler rounds differently, and the fluid carries that along. Solving the
// pressure with a sixth more iterations, or half a percent more force, changes more than rounding does and moves the
// mean of these pictures by 0.05 and no pixel by farStep. What people tell apart in a comparison, such as 5 % of
// exposure or of opacity, moves the mean by 1 and more. The limit lies between, nearer to the latter. The share of far
// pixels catches what is small but plain: a lost letter, an edge in another place.
constexpr double largestMean = 0.8;  // of 255
constexpr double largestFarShare = 0.005;
constexpr int farStep = 16;  // a pixel with a channel that differs by more is far off

struct Look {
  std::string name;  ///< of the file in expected/
  std::vector<std::string> arguments;
};

const std::vector<Look> looks{
    {"northern-lights", {"--size", "480x24", "--preset", "Northern Lights"}},
    {"flurry", {"--size", "480x24", "--preset", "Flurry"}},
    {"bleed-and-notch", {"--size", "480x56", "--bar-height", "24", "--notch", "80x20"}},
    {"halo-and-pointer",
     {"--size", "240x40", "--bar-height", "40", "--notch", "60x24", "--preset", "Whisper", "--set",
      "notchMode=\"halo\"", "--set", "pointerMode=\"glow\"", "--set", "pointerGlow=2", "--pointer", "50,12"}},
    {"kept-text",
     {"--size", "480x24", "--set", "layerMode=\"aboveMenuBar\"", "--set", "opaqueBackground=false", "--set",
      "textShadow=0.5", "--mask", "bar.png"}},
    {"desktop-full", {"--size", "240x135", "--set", "layerMode=\"desktopFull\""}},
};

/// A bar with something like words on it. No font is used, as fonts differ from system to system.
QImage barPicture() {
  QImage bar(480, 24, QImage::Format_RGBA8888);
  bar.fill(QColor(30, 32, 36));
  QPainter painter(&bar);
  for (int x : {12, 22, 32, 60, 70, 200, 210, 220, 230, 420, 430, 440}) {
    painter.fillRect(x, 7, 2, 11, QColor(235, 235, 240));
    painter.fillRect(x, x % 20 < 10 ? 7 : 12, 6, 2, QColor(235, 235, 240));
  }
  return bar;
}

/// Premultiplied, so that the colour of what is transparent does not count.
QImage load(const std::string& path) {
  return QImage(QString::fromStdString(path)).convertToFormat(QImage::Format_RGBA8888_Premultiplied);
}

void save(const QImage& picture, const std::string& path) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  ASSERT_TRUE(picture.save(QString::fromStdString(path), "PNG")) << path;
}

/// `gpu`: as the program's option.
QImage draw(std::vector<std::string> arguments, const std::string& gpu) {
  const TemporaryFolder folder;
  save(barPicture(), folder.file("bar.png"));
  std::ranges::replace(arguments, "bar.png", folder.file("bar.png"));
  arguments.insert(arguments.begin(),
                   {"render", "--gpu", gpu, "--seconds", "2", "--fps", "30", "--output", folder.file("it.png")});
  const ProcessResult result = runProcess(VELORIA_BINARY, arguments, {}, {"DISPLAY=", "WAYLAND_DISPLAY="}, 240);
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  return load(folder.file("it.png"));
}

std::string expectedFile(const Look& look) {
  return std::string(VELORIA_TEST_DATA) + "/expected/" + look.name + ".png";
}

/// What makes two pictures of one size differ by more than the tolerance; empty when nothing does.
std::string difference(const QImage& a, const QImage& b) {
  double sum = 0;
  double far = 0;
  for (int y = 0; y < a.height(); ++y) {
    const uchar* p = a.constScanLine(y);
    const uchar* q = b.constScanLine(y);
    for (int x = 0; x < a.width(); ++x) {
      int most = 0;
      for (int c = 0; c < 4; ++c, ++p, ++q) {
        sum += std::abs(*p - *q);
        most = std::max(most, std::abs(*p - *q));
      }
      far += most > farStep ? 1 : 0;
    }
  }
  const double pixels = static_cast<double>(a.width()) * a.height();
  const double mean = sum / (pixels * 4);
  if (mean <= largestMean && far / pixels <= largestFarShare) return "";
  return "the mean differs by " + std::to_string(mean) + " of 255, and " + std::to_string(100 * far / pixels) +
         " % of the pixels are far off";
}

class Golden : public testing::TestWithParam<const char*> {};

TEST_P(Golden, LooksAsBefore) {
  const char* update = std::getenv("VELORIA_UPDATE_GOLDEN");
  for (const Look& look : looks) {
    SCOPED_TRACE(expectedFile(look));
    const QImage actual = draw(look.arguments, GetParam());
    ASSERT_FALSE(actual.isNull());
    if (update != nullptr && std::string(update) == "1") {
      save(actual, expectedFile(look));
      ADD_FAILURE() << "written: look at it, then test without VELORIA_UPDATE_GOLDEN";
      continue;
    }
    const QImage expected = load(expectedFile(look));
    ASSERT_EQ(expected.size(), actual.size()) << "missing or of another size";
    const std::string differs = difference(expected, actual);
    if (differs.empty()) continue;
    const std::string report = std::string(VELORIA_GOLDEN_REPORTS) + "/" + look.name + "-" + GetParam() + ".png";
    save(actual, report);
    ADD_FAILURE() << differs << "\nWhat came: " << report;
  }
}

// The program's own renderer, and the first device of Vulkan's.
INSTANTIATE_TEST_SUITE_P(Gpus, Golden, testing::Values("cpu", "0"));

}  // namespace
}  // namespace veloria::tests
