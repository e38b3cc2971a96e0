#include "platform/linux/wallpaper/Slideshow.h"

#include <QByteArray>
#include <QXmlStreamReader>

namespace veloria {

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
