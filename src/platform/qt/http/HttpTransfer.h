#pragma once

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>
#include <functional>
#include <memory>
#include <string>

#include "base/Result.h"

namespace veloria {

/// One request, sent on as redirects say, and its answer, on the thread of the manager. Ends without a word when it is
/// destroyed.
class HttpTransfer final : public QObject {
 public:
  using Ended = std::function<void(Result<std::string>)>;

  /// Sends the request. `ended` is called once, on this thread and later, and must not destroy this. A body of more
  /// than `cap` bytes is a failure as soon as that is seen.
  HttpTransfer(QNetworkAccessManager& manager, const QUrl& url, qint64 cap, Ended ended);
  ~HttpTransfer() override;

 private:
  struct Later {
    void operator()(QObject* object) const { object->deleteLater(); }
  };

  void send(const QUrl& url);
  void follow(const QUrl& target);
  void read();
  void finish();
  void end(Result<std::string> result);

  QNetworkAccessManager& manager_;
  qint64 cap_;
  Ended ended_;
  int redirects_ = 0;
  QByteArray body_;
  std::unique_ptr<QNetworkReply, Later> reply_;
};

}  // namespace veloria
