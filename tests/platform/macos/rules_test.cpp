// What the Mac says of its windows, screens, clicks and pictures, and what is made of it.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <limits>

#include "Process.h"
#include "app/NimbraWindow.h"
#include "platform/macos/shell/StatusClick.h"
#include "platform/macos/sources/PictureLimits.h"
#include "platform/macos/windows/WindowRules.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(WindowRules, OneLevelAboveTheSystemsOwnOrTheDebugLevel) {
  constexpr SystemLevels levels{.mainMenu = 24, .desktop = -2147483623};
  EXPECT_EQ(windowLevel(OverlayLevel::aboveMenuBar, {}, levels), 25);
  EXPECT_EQ(windowLevel(OverlayLevel::desktop, {}, levels), -2147483622);
  EXPECT_EQ(windowLevel(OverlayLevel::desktop, -5, levels), -5);
  EXPECT_EQ(windowLevel(OverlayLevel::desktop, 99'999'999'999, levels), std::numeric_limits<int>::max());
  for (const char* text : {"", "5x", "+-5", "99999999999999999999"}) EXPECT_EQ(debugWindowLevel(text), std::nullopt);
  EXPECT_EQ(debugWindowLevel("-5"), -5);
}

TEST(WindowRules, ScreensThatCanBeDrawnOn) {
  const struct {
    Rect frame;
    double scale;
    double kept;  ///< the scale that is left; 0: none
  } cases[] = {{{0, 0, 1728, 1117}, 2, 2},    {{0, 0, 0, 1117}, 2, 0},         {{0, 0, notANumber, 1117}, 2, 0},
               {{0, infinity, 10, 10}, 1, 0}, {{0, 0, 32768, 10}, 2, 0},       {{0, 0, 32767.5, 10}, 2, 2},
               {{0, 0, 10, 32768}, 2, 0},     {{0, 0, 10, 10}, notANumber, 1}, {{0, 0, 10, 10}, 0, 1}};
  for (const auto& [frame, scale, kept] : cases) {
    Screen screen;
    screen.frame = frame;
    screen.backingScale = scale;
    const auto checked = checkedScreens({screen});
    EXPECT_EQ(checked.empty() ? 0 : checked.front().backingScale, kept) << frame.width << " " << scale;
  }
}

TEST(WindowRules, AFullScreenSpaceIsAFirstScreenWhoseMenuBarTakesNoRoom) {
  const auto withBar = [](double height) {
    Screen screen;
    screen.frame = {0, -982, 1512, 982};
    screen.visibleFrame = {0, -922, 1512, 922 - height};
    return screen;
  };
  EXPECT_FALSE(isFullScreenSpace({}));
  for (const auto& [height, full] : {std::pair{37.0, false}, {1, false}, {0.5, true}, {0, true}}) {
    EXPECT_EQ(isFullScreenSpace(std::vector{withBar(height), withBar(24)}), full) << height;
  }
  EXPECT_FALSE(isFullScreenSpace(std::vector{withBar(24), withBar(0)}));
}

TEST(StatusClick, ByTheEventThatIsHandled) {
  constexpr std::uint64_t leftUp = 2, rightUp = 4, key = 10, shift = 0x20000, control = 0x40000, command = 0x100000;
  EXPECT_EQ(statusClick(CurrentEvent{rightUp, 0}), (StatusClick{Click::secondary, false}));
  EXPECT_EQ(statusClick(CurrentEvent{leftUp, control | shift}), (StatusClick{Click::primary, true}));
  EXPECT_EQ(statusClick(CurrentEvent{leftUp, shift | command}), (StatusClick{Click::primary, false}));
  EXPECT_EQ(statusClick(CurrentEvent{key, control}), (StatusClick{Click::primary, true}));
}

TEST(PictureLimits, AFileIsTheSameUntilItsTimeOrSizeChanges) {
  const TemporaryFolder folder;
  const fs::path path = folder.write("a.heic", "picture");
  const auto first = pictureFileFacts(path);
  ASSERT_TRUE(first);
  fs::last_write_time(path, first->written + std::chrono::seconds(1));
  EXPECT_NE(pictureFileFacts(path), first);
  fs::last_write_time(path, first->written);
  EXPECT_EQ(pictureFileFacts(path), first);
  folder.write("a.heic", "another picture");
  fs::last_write_time(path, first->written);
  EXPECT_NE(pictureFileFacts(path), first);
  const fs::path pipe = folder.file("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const fs::path& odd : {fs::path(folder.path()), pipe, fs::path(folder.write("empty", ""))}) {
    EXPECT_FALSE(pictureFileFacts(odd)) << odd;
  }
  fs::resize_file(path, std::uintmax_t{256} << 20);
  EXPECT_TRUE(pictureFileFacts(path));
  fs::resize_file(path, (std::uintmax_t{256} << 20) + 1);
  EXPECT_FALSE(pictureFileFacts(path));
}

TEST(PictureLimits, HugeAndUnknownSizesAreNotDecoded) {
  EXPECT_TRUE(mayDecode(6016, 6016) && mayDecode(32768, 1));
  for (const auto& [width, height] : {std::pair{0.0, 5.0}, {5, -5}, {32769, 1}, {32768, 32768}, {1, notANumber}}) {
    EXPECT_FALSE(mayDecode(width, height)) << width << " x " << height;
  }
}

TEST(PictureLimits, AThumbnailsPixelsInOrder) {
  constexpr std::size_t side = DesktopPicture::side;
  std::vector<std::uint8_t> bytes(side * side * 4, 0);
  bytes[0] = 255;
  bytes[3] = 77;
  bytes[5] = 51;
  bytes[(side + 2) * 4 + 2] = 255;
  const auto pixels = thumbnailPixels(bytes);
  ASSERT_TRUE(pixels);
  EXPECT_EQ((*pixels)[0], (ColorStop{1, 0, 0}));
  EXPECT_EQ((*pixels)[1], (ColorStop{0, 0.2F, 0}));
  EXPECT_EQ((*pixels)[side + 2], (ColorStop{0, 0, 1}));
  bytes.pop_back();
  EXPECT_FALSE(thumbnailPixels(bytes));
}

}  // namespace
}  // namespace veloria::tests
