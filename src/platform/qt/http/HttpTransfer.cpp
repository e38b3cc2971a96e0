#include "HttpTransfer.h"

#include <QNetworkRequest>
#include <algorithm>
#include <utility>

#include "UrlRules.h"

namespace veloria {

namespace {

constexpr int mostRedirects = 5;
constexpr qint64 readAheadBytes = 65536;
constexpr qsizetype longestReason = 200;

QNetworkRequest requestFor(const QUrl& url) {
  QNetworkRequest request(url);
  request.setHeader(QNetworkRequest::UserAgentHeader, "Veloria/" VELORIA_VERSION);
  // A small answer that grows when it is unpacked can't do harm when nothing is unpacked.
  request.setRawHeader("Accept-Encoding", "identity");
  request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
  for (const auto what : {QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::CookieSaveControlAttribute,
                          QNetworkRequest::AuthenticationReuseAttribute}) {
    request.setAttribute(what, QNetworkRequest::Manual);
  }
  request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
  return request;
}

/// The server answered in full; the error only says which status it chose.
bool isOnlyAStatus(QNetworkReply::NetworkError error) {
  return (error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError) ||
         (error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError);
}

bool isPacked(const QNetworkReply& reply) {
  const QByteArray encoding = reply.rawHeader("Content-Encoding").trimmed().toLower();
  return !encoding.isEmpty() && encoding != "identity";
}

/// Qt mostly, but not always, notices that the connection ended before the announced end.
bool isCutOff(const QNetworkReply& reply, qint64 received) {
  const QVariant length = reply.header(QNetworkRequest::ContentLengthHeader);
  return length.isValid() && !reply.hasRawHeader("Transfer-Encoding") && received != length.toLongLong();
}

Failure failure(const QString& reason) {
  return {reason.left(longestReason).toStdString()};
}

}  // namespace

HttpTransfer::HttpTransfer(QNetworkAccessManager& manager, const QUrl& url, qint64 cap, Ended ended)
    : manager_(manager), cap_(cap), ended_(std::move(ended)) {
  send(url);
}

HttpTransfer::~HttpTransfer() {
  reply_->disconnect(this);
  reply_->abort();
}

void HttpTransfer::send(const QUrl& url) {
  body_.clear();
  reply_.reset(manager_.get(requestFor(url)));
  reply_->setReadBufferSize(readAheadBytes);
  connect(reply_.get(), &QNetworkReply::readyRead, this, &HttpTransfer::read);
  connect(reply_.get(), &QNetworkReply::finished, this, &HttpTransfer::finish);
}

void HttpTransfer::follow(const QUrl& target) {
  const QString objection = objectionToRedirect(reply_->url(), target);
  if (!objection.isEmpty()) return end(failure(objection));
  if (++redirects_ > mostRedirects) return end(failure(QString("sent on more than %1 times").arg(mostRedirects)));
  send(target);
}

void HttpTransfer::read() {
  if (!ended_) return;
  const qint64 room = cap_ - body_.size();
  body_ += reply_->read(std::min(room + 1, reply_->bytesAvailable()));
  if (body_.size() > cap_) end(failure(QString("the answer has more than %1 bytes").arg(cap_)));
}

void HttpTransfer::finish() {
  read();
  if (!ended_) return;
  if (reply_->error() != QNetworkReply::NoError && !isOnlyAStatus(reply_->error())) {
    return end(failure(reply_->errorString()));
  }
  const QUrl target = reply_->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
  if (!target.isEmpty()) return follow(reply_->url().resolved(target));
  if (isPacked(*reply_)) return end(failure("the answer is compressed, though it was asked for as it is"));
  if (isCutOff(*reply_, body_.size())) return end(failure("Connection closed"));
  end(body_.toStdString());
}

void HttpTransfer::end(Result<std::string> result) {
  if (const auto ended = std::exchange(ended_, nullptr)) ended(std::move(result));
}

}  // namespace veloria
