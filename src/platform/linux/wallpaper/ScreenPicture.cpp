#include "platform/linux/wallpaper/ScreenPicture.h"

#include <algorithm>

namespace veloria {

std::optional<std::string> choosePicture(std::span<const ScreenPicture> pictures, std::string_view screen,
                                         std::string_view everyScreen) {
  for (const std::string_view wanted : {screen, everyScreen}) {
    const auto found = std::find_if(pictures.rbegin(), pictures.rend(),
                                    [wanted](const ScreenPicture& picture) { return picture.screen == wanted; });
    if (found != pictures.rend()) return found->address;
  }
  if (pictures.empty()) return std::nullopt;
  return pictures.front().address;
}

}  // namespace veloria
