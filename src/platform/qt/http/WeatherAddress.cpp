#include "platform/qt/http/WeatherAddress.h"

#include <QUrl>

#include "UrlRules.h"
#include "sources/WeatherSource.h"

namespace veloria {

namespace {

Failure refused(const QString& reason) {
  return {"NIMBRA_WEATHER_URL must be an https address, or http on this computer (localhost, 127.0.0.1, ::1): " +
          reason.toStdString()};
}

}  // namespace

Result<std::string> weatherBaseUrl(const std::optional<std::string>& fromEnvironment) {
  if (!fromEnvironment || fromEnvironment->empty()) return std::string(forecastServiceUrl);
  QUrl url(QString::fromStdString(*fromEnvironment), QUrl::StrictMode);
  if (const QString objection = objectionTo(url); !objection.isEmpty()) return refused(objection);
  if (url.hasQuery() || url.hasFragment()) return refused("the address has a query or a fragment");
  QString path = url.path(QUrl::FullyEncoded);
  while (path.endsWith('/')) path.chop(1);
  url.setPath(path, QUrl::StrictMode);
  return url.toString(QUrl::FullyEncoded).toStdString();
}

}  // namespace veloria
