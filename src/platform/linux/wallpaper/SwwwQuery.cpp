#include "platform/linux/wallpaper/SwwwQuery.h"

#include <vector>

#include "platform/linux/wallpaper/ScreenPicture.h"
#include "base/TextLines.h"

namespace veloria {

std::optional<std::string> swwwPictureFromText(std::string_view report, std::string_view screen) {
  constexpr std::string_view mark = " image: ";
  std::vector<ScreenPicture> pictures;
  for (std::string_view line : splitText(report, '\n')) {
    if (line.starts_with(": ")) line.remove_prefix(2);
    const auto start = line.find(mark);
    if (start == line.npos) continue;
    const std::string_view address = trimmed(line.substr(start + mark.size()));
    if (!address.empty()) pictures.push_back({std::string(line.substr(0, line.find(':'))), std::string(address)});
  }
  return choosePicture(pictures, screen, screen);
}

}  // namespace veloria
