// A few pictures of the program, compared with pictures that were looked at and kept. README.md tells how to renew
// them.

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "PictureDifference.h"
#include "Process.h"

namespace veloria::tests {
namespace {

struct Look {
  const char* name;  ///< of the file in expected/
  std::vector<std::string> arguments;
  bool masked = false;
};

std::ostream& operator<<(std::ostream& out, const Look& look) {
  return out << look.name;
}

const Look looks[] = {
    {"northern-lights", {"--size", "480x24", "--preset", "Northern Lights"}},
    {"flurry", {"--size", "480x24", "--preset", "Flurry"}},
    {"bleed-and-notch", {"--size", "480x56", "--bar-height", "24", "--notch", "80x20"}},
    {"kept-text",
     {"--size", "480x24", "--set", "layerMode=\"aboveMenuBar\"", "--set", "opaqueBackground=false", "--set",
      "textShadow=0.5"},
     true},
    {"desktop-full", {"--size", "240x135", "--set", "layerMode=\"desktopFull\""}},
};

const Look& look(const std::string& name) {
  for (const Look& each : looks) {
    if (each.name == name) return each;
  }
  throw std::out_of_range(name);
}

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

QImage load(const std::string& path) {
  return QImage(QString::fromStdString(path));
}

void save(const QImage& picture, const std::string& path) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  ASSERT_TRUE(picture.save(QString::fromStdString(path), "PNG")) << path;
}

QImage draw(const Look& look, const std::vector<std::string>& more = {}) {
  const TemporaryFolder folder;
  std::vector<std::string> arguments{"render", "--seconds", "2", "--fps", "30", "--output", folder.file("picture.png")};
  arguments.insert(arguments.end(), look.arguments.begin(), look.arguments.end());
  if (look.masked) {
    save(barPicture(), folder.file("bar.png"));
    arguments.insert(arguments.end(), {"--mask", folder.file("bar.png")});
  }
  arguments.insert(arguments.end(), more.begin(), more.end());
  const ProcessResult result = runProcess(VELORIA_BINARY, arguments, {}, {"DISPLAY=", "WAYLAND_DISPLAY="}, 240);
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  return load(folder.file("picture.png"));
}

std::string expectedFile(const Look& look) {
  return std::string(VELORIA_TEST_DATA) + "/expected/" + look.name + ".png";
}

bool updates() {
  const char* wanted = std::getenv("VELORIA_UPDATE_GOLDEN");
  return wanted != nullptr && std::string(wanted) == "1";
}

class Golden : public testing::TestWithParam<Look> {};

TEST_P(Golden, looksAsBefore) {
  const QImage actual = draw(GetParam());
  ASSERT_FALSE(actual.isNull());
  if (updates()) {
    save(actual, expectedFile(GetParam()));
    FAIL() << "wrote " << expectedFile(GetParam()) << ": look at it, then test without VELORIA_UPDATE_GOLDEN";
  }
  const QImage expected = load(expectedFile(GetParam()));
  ASSERT_EQ(expected.size(), actual.size()) << expectedFile(GetParam()) << " is missing or of another size";
  const PictureDifference difference = differenceOf(expected, actual);
  if (isSameLook(difference)) return;
  const std::string report = std::string(VELORIA_GOLDEN_REPORTS) + "/" + GetParam().name + ".png";
  save(comparison(expected, actual), report);
  FAIL() << difference << "\nExpected, actual and difference (times 4), from the top: " << report;
}

std::string testName(const testing::TestParamInfo<Look>& tested) {
  std::string name = tested.param.name;
  std::erase(name, '-');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Looks, Golden, testing::ValuesIn(looks), testName);

struct Variation {
  const char* look;
  std::vector<std::string> change;
};

PictureDifference differenceBy(const Variation& variation) {
  const QImage expected = load(expectedFile(look(variation.look)));
  const QImage actual = draw(look(variation.look), variation.change);
  if (expected.size() != actual.size()) throw std::runtime_error("sizes differ");
  return differenceOf(expected, actual);
}

TEST(GoldenTolerance, aChangedLookFails) {
  const Variation variations[] = {
      {"northern-lights", {"--preset", "Glacier Drift"}},
      {"northern-lights", {"--set", "exposure=0.945"}},  // 5 % brighter
      {"northern-lights", {"--set", "hueShift=0.01"}},
      {"northern-lights", {"--set", "rayScale=7.1"}},
      {"flurry", {"--preset", "Rave"}},
      {"flurry", {"--set", "saturation=1.4"}},
      {"bleed-and-notch", {"--set", "notchMode=\"halo\""}},
      {"bleed-and-notch", {"--set", "fadeBottom=0.4"}},
      {"kept-text", {"--set", "preserveMenuBarText=false", "--set", "textThreshold=10"}},
      {"kept-text", {"--set", "opacity=0.8"}},
      {"desktop-full", {"--set", "glowAmount=0.7"}},
  };
  for (const Variation& each : variations) {
    const auto difference = differenceBy(each);
    EXPECT_FALSE(isSameLook(difference)) << each.look << " " << testing::PrintToString(each.change) << ": "
                                         << difference;
  }
}

TEST(GoldenTolerance, otherArithmeticPasses) {
  const Variation variations[] = {
      {"northern-lights", {"--set", "pressureIterations=28"}},  // the fluid is solved a little more exactly
      {"northern-lights", {"--set", "curlStrength=2.21"}},     {"flurry", {"--set", "vorticity=0.71"}},
      {"bleed-and-notch", {"--set", "velDissipation=0.9948"}}, {"desktop-full", {"--set", "pressureIterations=22"}},
  };
  for (const Variation& each : variations) {
    const auto difference = differenceBy(each);
    EXPECT_TRUE(isSameLook(difference)) << each.look << " " << testing::PrintToString(each.change) << ": "
                                        << difference;
    EXPECT_GT(difference.mean, 0) << "the variation does nothing: " << each.look;
  }
}

}  // namespace
}  // namespace veloria::tests
