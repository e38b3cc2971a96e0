#include "platform/linux/wallpaper/NitrogenSettings.h"

#include <vector>

#include "platform/linux/wallpaper/ScreenPicture.h"
#include "base/TextLines.h"

namespace veloria {

std::optional<std::string> nitrogenPictureFromText(std::string_view settings) {
  std::vector<ScreenPicture> pictures;
  std::string_view section;
  for (const std::string_view rawLine : splitText(settings, '\n')) {
    const std::string_view line = trimmed(rawLine);
    if (line.starts_with('[')) section = line;
    const auto entry = keyAndValue(line);
    if (!entry || entry->first != "file" || entry->second.empty()) continue;
    pictures.push_back({std::string(section), std::string(entry->second)});
  }
  return choosePicture(pictures, "[xin_-1]", "[xin_0]");
}

}  // namespace veloria
