#include "platform/linux/wallpaper/PlasmaSettings.h"

#include <cstddef>
#include <map>
#include <vector>

#include "base/TextLines.h"

namespace veloria {

namespace {

constexpr std::string_view singlePicture = "org.kde.image";
constexpr std::string_view slideshow = "org.kde.slideshow";

struct Containment {
  std::string_view plugin;
  bool onFirstScreen = false;
  std::string_view image;      // of the single picture
  std::string_view slideshow;  // its current picture

  std::string_view shown() const {
    if (plugin.empty() || plugin == singlePicture) return image;
    return plugin == veloria::slideshow ? slideshow : std::string_view();
  }
};

/// "[Containments][1][General]" as its names; nothing that is no group's head.
std::vector<std::string_view> groupNames(std::string_view line) {
  if (!line.starts_with('[') || !line.ends_with(']')) return {};
  std::vector<std::string_view> names = splitText(line.substr(1, line.size() - 2), ']');
  for (auto name = names.begin() + 1; name != names.end(); ++name) {
    if (name->starts_with('[')) name->remove_prefix(1);
  }
  return names;
}

class SettingsReader {
 public:
  void read(std::string_view line) {
    if (line.starts_with('[')) {
      group_ = groupNames(line);
    } else if (const auto entry = keyAndValue(line); entry && group_.size() >= 2 && group_[0] == "Containments") {
      take(entry->first.substr(0, entry->first.find('[')), entry->second);
    }
  }

  /// The first one's on the first screen, else the first one's.
  std::string_view choice() const {
    std::string_view choice;
    for (const Containment& containment : containments_) {
      if (containment.shown().empty()) continue;
      if (containment.onFirstScreen) return containment.shown();
      if (choice.empty()) choice = containment.shown();
    }
    return choice;
  }

 private:
  void take(std::string_view key, std::string_view value) {
    Containment& containment = containmentOfGroup();
    if (group_.size() == 2 && key == "wallpaperplugin") containment.plugin = value;
    if (group_.size() == 2 && key == "lastScreen") containment.onFirstScreen = value == "0";
    if (key != "Image" || group_.size() != 5 || group_[2] != "Wallpaper" || group_[4] != "General") return;
    if (group_[3] == singlePicture) containment.image = value;
    if (group_[3] == slideshow) containment.slideshow = value;
  }

  Containment& containmentOfGroup() {
    const auto [place, isNew] = places_.try_emplace(group_[1], containments_.size());
    if (isNew) containments_.emplace_back();
    return containments_[place->second];
  }

  std::vector<std::string_view> group_;
  std::map<std::string_view, std::size_t> places_;
  std::vector<Containment> containments_;
};

/// The escapes of a value; unknown ones stay as they are.
std::string unescaped(std::string_view value) {
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const bool escape = value[i] == '\\' && i + 1 < value.size();
    if (escape && value[i + 1] == 's') {
      text += ' ';
      ++i;
    } else {
      text += value[i];
      if (escape && value[i + 1] == '\\') ++i;
    }
  }
  return text;
}

}  // namespace

std::optional<std::string> plasmaPictureFromText(std::string_view settings) {
  SettingsReader reader;
  for (const std::string_view line : splitText(settings, '\n')) reader.read(trimmed(line));
  const std::string_view choice = reader.choice();
  if (choice.empty()) return std::nullopt;
  return unescaped(choice);
}

}  // namespace veloria
