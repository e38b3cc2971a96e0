#include "platform/qt/http/QtHttpFetcher.h"

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <functional>
#include <unordered_map>
#include <utility>

#include "base/MediaClock.h"
#include "platform/qt/WorkerThread.h"
#include "platform/qt/http/WebAddress.h"

namespace veloria {

namespace {

constexpr double shortestPatience = 0.001;
constexpr double longestPatience = 86400;
constexpr int mostRedirects = 5;
constexpr qint64 readAheadBytes = 65536;
constexpr qsizetype longestReason = 200;
constexpr std::size_t largestCap = std::size_t{1} << 30;

double patience(double seconds) {
  return seconds > shortestPatience ? std::min(seconds, longestPatience) : shortestPatience;
}

QNetworkRequest requestFor(const QUrl& url) {
  QNetworkRequest request(url);
  request.setHeader(QNetworkRequest::UserAgentHeader, "Veloria/" VELORIA_VERSION);
  // A decompression bomb does no harm if nothing is decompressed.
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

/// One request with its redirects, on the thread of the manager. The destructor ends it without calling `ended`.
class Transfer final : public QObject {
 public:
  using Ended = std::function<void(Result<std::string>)>;

  /// Sends the request. `ended` is called once, on this thread and later, and must not destroy this. A body of more
  /// than `cap` bytes is a failure at once.
  Transfer(QNetworkAccessManager& manager, const QUrl& url, qint64 cap, Ended ended)
      : manager_(manager), cap_(cap), ended_(std::move(ended)) {
    send(url);
  }

  ~Transfer() override {
    reply_->disconnect(this);
    reply_->abort();
  }

 private:
  struct Later {
    void operator()(QObject* object) const { object->deleteLater(); }
  };

  void send(const QUrl& url) {
    body_.clear();
    reply_.reset(manager_.get(requestFor(url)));
    reply_->setReadBufferSize(readAheadBytes);
    connect(reply_.get(), &QNetworkReply::readyRead, this, &Transfer::read);
    connect(reply_.get(), &QNetworkReply::finished, this, &Transfer::finish);
  }

  void follow(const QUrl& target) {
    const QString objection = objectionToRedirect(reply_->url(), target);
    if (!objection.isEmpty()) return end(failure(objection));
    if (++redirects_ > mostRedirects) return end(failure(QString("more than %1 redirects").arg(mostRedirects)));
    send(target);
  }

  void read() {
    if (!ended_) return;
    const qint64 room = cap_ - body_.size();
    body_ += reply_->read(std::min(room + 1, reply_->bytesAvailable()));
    if (body_.size() > cap_) end(failure(QString("the answer has more than %1 bytes").arg(cap_)));
  }

  void finish() {
    read();
    if (!ended_) return;
    if (reply_->error() != QNetworkReply::NoError && !isOnlyAStatus(reply_->error())) {
      return end(failure(reply_->errorString()));
    }
    const QUrl target = reply_->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (!target.isEmpty()) return follow(reply_->url().resolved(target));
    if (isPacked(*reply_)) return end(failure("the answer is compressed, which was not requested"));
    if (isCutOff(*reply_, body_.size())) return end(failure("Connection closed"));
    end(body_.toStdString());
  }

  void end(Result<std::string> result) {
    if (const auto ended = std::exchange(ended_, nullptr)) ended(std::move(result));
  }

  QNetworkAccessManager& manager_;
  qint64 cap_;
  Ended ended_;
  int redirects_ = 0;
  QByteArray body_;
  std::unique_ptr<QNetworkReply, Later> reply_;
};

/// The system's proxies, but for what stays on this computer.
class OutsideProxies final : public QNetworkProxyFactory {
 public:
  QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override {
    if (isLoopback(query.url())) return {QNetworkProxy::NoProxy};
    return systemProxyForQuery(query);
  }
};

std::unique_ptr<QNetworkAccessManager> makeManager() {
  auto manager = std::make_unique<QNetworkAccessManager>();
  manager->setProxyFactory(std::make_unique<OutsideProxies>().release());  // it takes the factory over
  return manager;
}

/// The active requests, on a thread of their own: looking up the system's proxy, loading the TLS library and reading
/// certificates may take time. All calls but the constructor and the destructor are on that thread.
class Worker final : public QObject {
 public:
  /// Sends request number `id`. `ended` is called on this thread, later than this call.
  void start(int id, const QUrl& url, qint64 cap, Transfer::Ended ended) {
    if (!manager_) manager_ = makeManager();
    transfers_[id] = std::make_unique<Transfer>(*manager_, url, cap,
                                                [this, id, ended = std::move(ended)](Result<std::string> result) {
                                                  QMetaObject::invokeMethod(
                                                      this, [this, id] { cancel(id); }, Qt::QueuedConnection);
                                                  ended(std::move(result));
                                                });
  }

  /// Ends a request without calling `ended`. No effect if it has ended already.
  void cancel(int id) { transfers_.erase(id); }

  /// Ends all requests and everything that belongs to the thread. Called before the thread ends.
  void stop() {
    transfers_.clear();
    manager_.reset();
  }

 private:
  std::unique_ptr<QNetworkAccessManager> manager_;
  std::unordered_map<int, std::unique_ptr<Transfer>> transfers_;
};

}  // namespace

/// The requests that wait for their answers, on the main thread.
class QtHttpFetcher::Requests final : public QObject {
 public:
  void accept(const QUrl& url, qint64 cap, double seconds, Done done) {
    const int id = ++lastId_;
    waiting_.emplace(id, std::move(done));
    after(pacing_.delay(mediaTime()), [this, id, url, cap, seconds] { send(id, url, cap, seconds); });
  }

 private:
  void send(int id, const QUrl& url, qint64 cap, double seconds) {
    if (const QString objection = objectionTo(url); !objection.isEmpty()) {
      return deliver(id, Failure{objection.toStdString()});
    }
    thread_.post([this, id, url, cap](Worker& worker) {
      worker.start(id, url, cap, [this, id](Result<std::string> result) {
        QMetaObject::invokeMethod(this, [this, id, result = std::move(result)] { deliver(id, result); });
      });
    });
    after(seconds, [this, id, seconds] { giveUp(id, seconds); });
  }

  void giveUp(int id, double seconds) {
    if (!waiting_.contains(id)) return;
    thread_.post([id](Worker& worker) { worker.cancel(id); });
    deliver(id, Failure{"no answer within " + QString::number(seconds).toStdString() + " s"});
  }

  /// Calls `done` last, because it may destroy this object.
  void deliver(int id, Result<std::string> result) {
    const auto request = waiting_.extract(id);
    if (!request.empty()) request.mapped()(std::move(result));
  }

  template <typename Action>
  void after(double seconds, Action action) {
    const auto milliseconds = static_cast<int>(std::min(seconds, longestPatience) * 1000);
    QTimer::singleShot(milliseconds, this, std::move(action));
  }

  int lastId_ = 0;
  RequestPacing pacing_;
  std::unordered_map<int, Done> waiting_;
  WorkerThread<Worker> thread_;  ///< last: it reports to the other members until it ends
};

QtHttpFetcher::QtHttpFetcher() : requests_(std::make_unique<Requests>()) {}

QtHttpFetcher::~QtHttpFetcher() = default;

void QtHttpFetcher::get(const std::string& url, std::size_t cap, double seconds, Done done) {
  requests_->accept(QUrl(QString::fromStdString(url), QUrl::StrictMode), static_cast<qint64>(std::min(cap, largestCap)),
                    patience(seconds), std::move(done));
}

}  // namespace veloria
