// What desktops and wallpaper programs have written about their picture, from any bytes: the first line is the screen's
// name, the rest the text, and every reader gets it. Whatever address comes out must lead to an absolute path or
// nowhere.

#include <algorithm>

#include "FuzzTarget.h"
#include "base/Text.h"
#include "platform/linux/wallpaper/PictureFinder.h"
#include "platform/linux/wallpaper/PictureSettings.h"

namespace veloria {

static void follow(const std::optional<std::string>& address) {
  for (const char* home : {"/home/u", ""}) {
    const auto path = localPath(address.value_or(""), home);
    require(!path || (path->is_absolute() && path->native().find('\0') == std::string::npos));
  }
}

void fuzz(std::string_view bytes) {
  const std::string_view screen = bytes.substr(0, bytes.find('\n'));
  const std::string_view text = bytes.substr(std::min(bytes.size(), screen.size() + 1));
  for (const bool dark : {false, true}) follow(gsettingsPictureFromText(text, dark));
  follow(plasmaPictureFromText(text));
  follow(xfcePictureFromText(text, screen));
  follow(slideshowPictureFromText(text));
  follow(swaybgPictureFromText(text, screen));
  follow(swwwPictureFromText(text, screen));
  follow(hyprpaperPictureFromText(text, screen));
  follow(std::string(text));
  const auto lines = splitText(text, '\n');
  const auto chosen = packagePicture(std::vector<std::string>(lines.begin(), lines.end()), 48);
  require(!chosen || text.find(*chosen) != std::string_view::npos);
}

}  // namespace veloria
