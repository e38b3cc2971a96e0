#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <limits>
#include <string>

#include "platform/macos/wallpaper/PictureLimits.h"
#include "platform/macos/wallpaper/ThumbnailPixels.h"

namespace veloria {
namespace {

namespace fs = std::filesystem;

class PictureFacts : public testing::Test {
 protected:
  PictureFacts() : folder_(fs::path(testing::TempDir()) / ("picture-" + std::to_string(::getpid()))) {
    fs::create_directories(folder_);
  }
  ~PictureFacts() override { fs::remove_all(folder_); }

  fs::path file(const std::string& name, const std::string& bytes) const {
    std::ofstream(folder_ / name) << bytes;
    return folder_ / name;
  }

  fs::path folder_;
};

TEST_F(PictureFacts, tellWhenAFileHasChanged) {
  const fs::path path = file("a.heic", "picture");
  const auto first = pictureFileFacts(path);
  ASSERT_TRUE(first);
  EXPECT_EQ(pictureFileFacts(path), first);
  fs::last_write_time(path, first->written + std::chrono::seconds(1));
  EXPECT_NE(pictureFileFacts(path), first);
  fs::last_write_time(path, first->written);
  EXPECT_EQ(pictureFileFacts(path), first);
  file("a.heic", "another picture");
  fs::last_write_time(path, first->written);
  EXPECT_NE(pictureFileFacts(path), first);
}

TEST_F(PictureFacts, onlyPlainFilesOfABearableSizeAreOpened) {
  fs::create_symlink(file("a.png", "picture"), folder_ / "link");
  fs::create_symlink("loop", folder_ / "loop");
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_TRUE(pictureFileFacts(folder_ / "link"));
  for (const fs::path& path : {folder_, folder_ / "missing", folder_ / "loop", folder_ / "pipe", fs::path("/dev/zero"),
                               file("empty", ""), fs::path()}) {
    EXPECT_FALSE(pictureFileFacts(path)) << path;
  }
  const fs::path large = file("large", "x");
  fs::resize_file(large, std::uintmax_t{256} << 20);
  EXPECT_TRUE(pictureFileFacts(large));
  fs::resize_file(large, (std::uintmax_t{256} << 20) + 1);
  EXPECT_FALSE(pictureFileFacts(large));
}

TEST(PictureLimits, hugeAndUnknownSizesAreNotDecoded) {
  EXPECT_TRUE(mayDecode(6016, 6016));
  EXPECT_TRUE(mayDecode(32768, 1));
  EXPECT_TRUE(mayDecode(1, 1));
  EXPECT_FALSE(mayDecode(0, 0));
  EXPECT_FALSE(mayDecode(-5, 5));
  EXPECT_FALSE(mayDecode(32769, 1));
  EXPECT_FALSE(mayDecode(32768, 32768));
  EXPECT_FALSE(mayDecode(std::numeric_limits<double>::quiet_NaN(), 100));
  EXPECT_FALSE(mayDecode(100, std::numeric_limits<double>::infinity()));
}

TEST(ThumbnailPixels, redGreenAndBlueOfEachPixelInOrder) {
  constexpr std::size_t side = DesktopPicture::side;
  std::vector<std::uint8_t> bytes(side * side * 4, 0);
  bytes[0] = 255;
  bytes[3] = 77;
  bytes[5] = 51;
  bytes[(side + 2) * 4 + 2] = 255;
  const auto pixels = thumbnailPixels(bytes);
  ASSERT_TRUE(pixels);
  ASSERT_EQ(pixels->size(), side * side);
  EXPECT_EQ((*pixels)[0], (ColorStop{1, 0, 0}));
  EXPECT_EQ((*pixels)[1], (ColorStop{0, 0.2F, 0}));
  EXPECT_EQ((*pixels)[side + 2], (ColorStop{0, 0, 1}));
  bytes.pop_back();
  EXPECT_FALSE(thumbnailPixels(bytes));
  EXPECT_FALSE(thumbnailPixels({}));
}

}  // namespace
}  // namespace veloria
