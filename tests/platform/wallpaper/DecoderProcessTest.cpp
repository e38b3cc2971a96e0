#include "platform/linux/wallpaper/PictureDecoder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QImageReader>
#include <string>
#include <vector>

#include "Process.h"

namespace veloria {
namespace {

using testing::HasSubstr;

std::string svg(const std::string& content, const std::string& size = "1920") {
  return R"(<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" width=")" + size +
         R"(" height="1080">)" + content + "</svg>";
}

std::string showing(const std::string& file) {
  return svg(R"(<image width="9" height="9" xlink:href=")" + file + R"("/>)");
}

std::string nested(std::size_t depth) {
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) text += "<g>";
  return svg(text);
}

std::string laughs() {
  std::string text = R"(<!DOCTYPE svg [<!ENTITY a "ha">)";
  for (char c = 'b'; c < 'z'; ++c) {
    text += std::string("<!ENTITY ") + c + " \"";
    for (int i = 0; i < 10; ++i) text += std::string("&") + static_cast<char>(c - 1) + ";";
    text += "\">";
  }
  return text + "]>" + svg("<text>&y;</text>");
}

class DecoderProcess : public testing::Test {
 protected:
  void SetUp() override {
    if (!QImageReader::supportedImageFormats().contains("svg")) GTEST_SKIP() << "no SVG reader: libqt6svg6 is missing";
  }

  tests::TemporaryFolder folder_;
};

TEST_F(DecoderProcess, ReadsADesktopPictureOfCurvesAndText) {
  const std::string file = folder_.write("default.svg", svg(R"(<rect width="960" height="1080" fill="#ff6633"/>
      <rect x="960" width="960" height="1080" fill="#003399"/><text x="900" y="1000">Debian</text>)"));
  const auto pixels = decodePictureWith(VELORIA_BINARY, file);
  ASSERT_TRUE(pixels) << pixels.error();
  ASSERT_EQ(pixels->size(), std::size_t{DesktopPicture::side} * DesktopPicture::side);
  EXPECT_EQ(pixels->front(), (ColorStop{1, 0.4F, 0.2F}));
  EXPECT_EQ(pixels->back(), (ColorStop{0, 0.2F, 0.6F}));
}

TEST_F(DecoderProcess, EndsWithAPictureThatHarmsItsReader) {
  const std::string pipe = folder_.file("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  struct Case {
    const char* name;
    std::string content;
    const char* problem;
  };
  for (const Case& each : std::vector<Case>{{"itself.svg", showing(folder_.file("itself.svg")), "gave up"},
                                            {"pipe.svg", showing(pipe), "too long"},
                                            {"vast.svg", svg("", "2000000000"), "too large"},
                                            {"deep.svg", nested(300'000), ""},
                                            {"laughs.svg", laughs(), ""},
                                            {"new.heic", "no picture", "no reader for .heic pictures is installed"}}) {
    const auto pixels = decodePictureWith(VELORIA_BINARY, folder_.write(each.name, each.content), 3);
    ASSERT_FALSE(pixels) << each.name;
    EXPECT_THAT(pixels.error(), HasSubstr(each.problem)) << each.name;
  }
}

}  // namespace
}  // namespace veloria
