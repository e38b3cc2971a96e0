#include "platform/linux/wallpaper/XfceSettings.h"

#include <QByteArray>
#include <QXmlStreamReader>
#include <algorithm>
#include <vector>

#include "platform/linux/wallpaper/ScreenPicture.h"

namespace veloria {

namespace {

constexpr std::string_view monitorPrefix = "monitor";

/// Properties of type "empty" hold others. A backdrop is such a one: it holds last-image (image-path in old versions)
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

}  // namespace veloria
