// What desktops and wallpaper programs have written about their picture, from any bytes: the first line is the screen's
// name, the rest the text, and every reader gets it. Whatever address comes out must lead to an absolute path or
// nowhere.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Text.h"
#include "platform/linux/wallpaper/PictureFinder.h"
#include "platform/linux/wallpaper/PictureSettings.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

void follow(const std::optional<std::string>& address) {
  if (!address) return;
  for (const char* home : {"/home/u", ""}) {
    const auto path = veloria::localPath(*address, home);
    require(!path || (path->is_absolute() && path->native().find('\0') == std::string::npos));
  }
}

void choosePackagePicture(std::string_view text) {
  std::vector<std::string> names;
  for (const std::string_view line : veloria::splitText(text, '\n')) names.emplace_back(line);
  const auto chosen = veloria::packagePicture(names, 48);
  require(!chosen || text.find(*chosen) != std::string_view::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::string_view screen = bytes.substr(0, bytes.find('\n'));
  const std::string_view text = bytes.substr(std::min(bytes.size(), screen.size() + 1));
  for (const bool dark : {false, true}) follow(veloria::gsettingsPictureFromText(text, dark));
  follow(veloria::plasmaPictureFromText(text));
  follow(veloria::xfcePictureFromText(text, screen));
  follow(veloria::slideshowPictureFromText(text));
  follow(veloria::swaybgPictureFromText(text, screen));
  follow(veloria::swwwPictureFromText(text, screen));
  follow(veloria::hyprpaperPictureFromText(text, screen));
  follow(std::string(text));
  choosePackagePicture(text);
  return 0;
}
