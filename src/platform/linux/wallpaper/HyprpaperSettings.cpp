#include "platform/linux/wallpaper/HyprpaperSettings.h"

#include <vector>

#include "platform/linux/wallpaper/ScreenPicture.h"
#include "base/TextLines.h"

namespace veloria {

namespace {

std::string_view withoutComment(std::string_view line) {
  return trimmed(line.substr(0, line.find('#')));
}

/// "contain:~/picture.png" without the fitting.
std::string_view withoutFitting(std::string_view path) {
  for (const std::string_view fitting : {"contain:", "cover:", "tile:", "fill:"}) {
    if (path.starts_with(fitting)) return trimmed(path.substr(fitting.size()));
  }
  return path;
}

class SettingsReader {
 public:
  void read(std::string_view line) {
    if (line.starts_with("wallpaper") && line.ends_with('{')) {
      block_.emplace();
    } else if (line == "}") {
      if (block_ && !block_->address.empty()) pictures_.push_back(*block_);
      block_.reset();
    } else if (const auto entry = keyAndValue(line)) {
      take(entry->first, entry->second);
    }
  }

  const std::vector<ScreenPicture>& pictures() const { return pictures_; }

 private:
  void take(std::string_view key, std::string_view value) {
    if (block_ && key == "monitor") block_->screen = value;
    if (block_ && key == "path") block_->address = value;
    const auto comma = value.find(',');
    if (block_ || key != "wallpaper" || comma == value.npos) return;
    const std::string_view path = withoutFitting(trimmed(value.substr(comma + 1)));
    if (!path.empty()) pictures_.push_back({std::string(trimmed(value.substr(0, comma))), std::string(path)});
  }

  std::optional<ScreenPicture> block_;
  std::vector<ScreenPicture> pictures_;
};

}  // namespace

std::optional<std::string> hyprpaperPictureFromText(std::string_view settings, std::string_view screen) {
  SettingsReader reader;
  for (const std::string_view line : splitText(settings, '\n')) reader.read(withoutComment(line));
  return choosePicture(reader.pictures(), screen, "");
}

}  // namespace veloria
