#include "platform/qt/http/WebAddress.h"

#include <QHostAddress>
#include <QString>
#include <QUrl>

#include "sources/WeatherSource.h"

namespace veloria {

namespace {

Failure refused(const QString& reason) {
  return {"NIMBRA_WEATHER_URL must be an https address, or http on this computer (localhost, 127.0.0.1, ::1): " +
          reason.toStdString()};
}

}  // namespace

bool isLoopback(const QUrl& url) {
  const QString host = url.host();
  return host == "localhost" || QHostAddress(host).isLoopback();
}

QString objectionTo(const QUrl& url) {
  if (!url.isValid() || url.host().isEmpty()) return "the address is not valid";
  if (!url.userInfo().isEmpty()) return "the address names a user";
  if (url.scheme() == "https" || (url.scheme() == "http" && isLoopback(url))) return {};
  return "the address is neither https nor http on this computer";
}

QString objectionToRedirect(const QUrl& from, const QUrl& to) {
  if (from.scheme() == "https" && to.scheme() == "http") return "redirected from https to http";
  const QString objection = objectionTo(to);
  return objection.isEmpty() ? QString() : "redirected, but " + objection;
}

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
