#include "platform/linux/wallpaper/SwaybgArguments.h"

#include <vector>

#include "platform/linux/wallpaper/ScreenPicture.h"
#include "base/TextLines.h"

namespace veloria {

namespace {

constexpr std::string_view everyOutput = "*";

/// What follows an option: behind '=' in a long one, right behind a short one, or the next argument.
std::optional<std::string_view> optionValue(std::string_view argument, std::string_view next, std::string_view letter,
                                            std::string_view word) {
  if (argument == letter || argument == word) return next;
  if (argument.starts_with("--")) {
    const bool inside = argument.starts_with(word) && argument.substr(word.size()).starts_with('=');
    return inside ? std::optional(argument.substr(word.size() + 1)) : std::nullopt;
  }
  return argument.starts_with(letter) ? std::optional(argument.substr(letter.size())) : std::nullopt;
}

}  // namespace

std::optional<std::string> swaybgPictureFromText(std::string_view arguments, std::string_view screen) {
  const std::vector<std::string_view> all = splitText(arguments, '\0');
  std::vector<ScreenPicture> pictures;
  std::string_view output = everyOutput;
  for (std::size_t i = 0; i + 1 < all.size(); ++i) {
    if (all[i].empty()) output = everyOutput;
    if (const auto name = optionValue(all[i], all[i + 1], "-o", "--output")) output = *name;
    const auto image = optionValue(all[i], all[i + 1], "-i", "--image");
    if (image && !image->empty()) pictures.push_back({std::string(output), std::string(*image)});
  }
  return choosePicture(pictures, screen, everyOutput);
}

}  // namespace veloria
