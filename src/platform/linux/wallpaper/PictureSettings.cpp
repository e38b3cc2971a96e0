#include "platform/linux/wallpaper/PictureSettings.h"

#include <QByteArray>
#include <QXmlStreamReader>
#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <map>
#include <vector>

#include "base/Text.h"

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

namespace {

/// A string in GVariant's text form: in quotes of either kind, with backslash escapes. Empty for a value of another
/// type. Refuses escapes for control characters, which do not occur in paths.
std::optional<std::string> unquoted(std::string_view value) {
  if (value.size() < 2 || (value.front() != '\'' && value.front() != '"') || value.back() != value.front()) {
    return std::nullopt;
  }
  std::string text;
  for (std::size_t i = 1; i + 1 < value.size(); ++i) {
    if (value[i] == '\\') {
      ++i;
      const bool plain = i + 1 < value.size() && (value[i] == '\'' || value[i] == '"' || value[i] == '\\');
      if (!plain) return std::nullopt;
    }
    text += value[i];
  }
  return text;
}

/// Lines are "schema key value".
std::optional<std::string> valueOf(std::string_view listing, std::string_view key) {
  for (const std::string_view line : splitText(listing, '\n')) {
    const auto space = line.find(' ');
    if (space == line.npos) continue;
    const std::string_view rest = line.substr(space + 1);
    if (rest.starts_with(key) && rest.substr(key.size()).starts_with(' ')) {
      return unquoted(trimmed(rest.substr(key.size())));
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> gsettingsPictureFromText(std::string_view listing, bool dark) {
  if (valueOf(listing, "picture-options") == "none") return std::nullopt;
  for (const std::string_view key : {"picture-uri-dark", "picture-uri", "picture-filename"}) {
    if (key == "picture-uri-dark" && !dark) continue;
    auto address = valueOf(listing, key);
    if (address && !address->empty()) return address;
  }
  return std::nullopt;
}

bool gsettingsPrefersDark(std::string_view value) {
  return value.starts_with("'prefer-dark'");
}

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

/// The names in "[Containments][1][General]"; none if the line is not a group's head.
std::vector<std::string_view> groupNames(std::string_view line) {
  if (!line.starts_with('[') || !line.ends_with(']')) return {};
  std::vector<std::string_view> names = splitText(line.substr(1, line.size() - 2), ']');
  for (auto name = names.begin() + 1; name != names.end(); ++name) {
    if (name->starts_with('[')) name->remove_prefix(1);
  }
  return names;
}

class PlasmaReader {
 public:
  void read(std::string_view line) {
    if (line.starts_with('[')) {
      group_ = groupNames(line);
    } else if (const auto entry = keyAndValue(line); entry && group_.size() >= 2 && group_[0] == "Containments") {
      readEntry(entry->first.substr(0, entry->first.find('[')), entry->second);
    }
  }

  /// The picture of the first containment on the first screen, else of the first one that has a picture.
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
  void readEntry(std::string_view key, std::string_view value) {
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
  PlasmaReader reader;
  for (const std::string_view line : splitText(settings, '\n')) reader.read(trimmed(line));
  const std::string_view choice = reader.choice();
  if (choice.empty()) return std::nullopt;
  return unescaped(choice);
}

namespace {

constexpr std::string_view monitorPrefix = "monitor";

/// Properties of type "empty" hold others. A backdrop is one of them: it holds last-image (image-path in old versions)
/// and image-style, somewhere below the property of a monitor.
class BackdropReader {
 public:
  void begin(const std::string& name, const std::string& type, const std::string& value) {
    open_.push_back({name, type == "empty"});
    if (open_.back().holdsOthers) image_.clear();
    if (open_.back().holdsOthers) shown_ = true;
    if (name == "last-image" || name == "image-path") image_ = value;
    if (name == "image-style") shown_ = value != "0";
  }

  void end() {
    if (open_.empty()) return;
    if (open_.back().holdsOthers && shown_ && !image_.empty()) add();
    if (open_.back().holdsOthers) image_.clear();
    open_.pop_back();
  }

  const std::vector<ScreenPicture>& pictures() const { return pictures_; }

 private:
  struct Property {
    std::string name;
    bool holdsOthers;
  };

  void add() {
    const auto monitor =
        std::ranges::find_if(open_, [](const Property& property) { return property.name.starts_with(monitorPrefix); });
    if (monitor == open_.end()) return;
    const std::string screen = monitor->name.substr(monitorPrefix.size());
    if (std::ranges::find(pictures_, screen, &ScreenPicture::screen) == pictures_.end()) {
      pictures_.push_back({screen, image_});
    }
  }

  std::vector<Property> open_;
  std::string image_;
  bool shown_ = true;
  std::vector<ScreenPicture> pictures_;
};

std::string attribute(const QXmlStreamReader& xml, const char* name) {
  return xml.attributes().value(QLatin1String(name)).toString().toStdString();
}

}  // namespace

std::optional<std::string> xfcePictureFromText(std::string_view xml, std::string_view screen) {
  QXmlStreamReader reader(QByteArray::fromRawData(xml.data(), static_cast<qsizetype>(xml.size())));
  BackdropReader backdrops;
  while (!reader.atEnd()) {
    reader.readNext();
    if (reader.name() != QLatin1String("property")) continue;
    if (reader.isStartElement()) {
      backdrops.begin(attribute(reader, "name"), attribute(reader, "type"), attribute(reader, "value"));
    }
    if (reader.isEndElement()) backdrops.end();
  }
  return choosePicture(backdrops.pictures(), screen, "0");
}

namespace {

constexpr std::string_view everyOutput = "*";

/// The value of an option: after '=' in a long one, right after a short one, or the next argument.
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

class HyprpaperReader {
 public:
  void read(std::string_view line) {
    if (line.starts_with("wallpaper") && line.ends_with('{')) {
      block_.emplace();
    } else if (line == "}") {
      if (block_ && !block_->address.empty()) pictures_.push_back(*block_);
      block_.reset();
    } else if (const auto entry = keyAndValue(line)) {
      readEntry(entry->first, entry->second);
    }
  }

  const std::vector<ScreenPicture>& pictures() const { return pictures_; }

 private:
  void readEntry(std::string_view key, std::string_view value) {
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
  HyprpaperReader reader;
  for (const std::string_view line : splitText(settings, '\n')) reader.read(withoutComment(line));
  return choosePicture(reader.pictures(), screen, "");
}

std::optional<std::string> slideshowPictureFromText(std::string_view xml) {
  QXmlStreamReader reader(QByteArray::fromRawData(xml.data(), static_cast<qsizetype>(xml.size())));
  bool inPicture = false;
  while (!reader.atEnd()) {
    reader.readNext();
    const bool named = reader.name() == QLatin1String("file") || reader.name() == QLatin1String("from");
    if (reader.isStartElement() && named) inPicture = true;
    if (reader.isEndElement() && named) inPicture = false;
    if (inPicture && reader.isCharacters() && !reader.isWhitespace()) {
      return reader.text().trimmed().toString().toStdString();
    }
  }
  return std::nullopt;
}

}  // namespace veloria
