#include "UrlRules.h"

#include <QHostAddress>
#include <QUrl>

namespace veloria {

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
  if (from.scheme() == "https" && to.scheme() == "http") return "sent on from https to http";
  const QString objection = objectionTo(to);
  return objection.isEmpty() ? QString() : "sent on, but " + objection;
}

}  // namespace veloria
