#include "platform/qt/http/QtHttpFetcher.h"

#include <QObject>
#include <QThread>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <unordered_map>
#include <utility>

#include "HttpWorker.h"
#include "UrlRules.h"
#include "base/MediaClock.h"
#include "platform/qt/http/RequestPacing.h"

namespace veloria {

namespace {

constexpr double shortestPatience = 0.001;
constexpr double longestPatience = 86400;
constexpr std::size_t largestCap = std::size_t{1} << 30;

double patience(double seconds) {
  return seconds > shortestPatience ? std::min(seconds, longestPatience) : shortestPatience;
}

}  // namespace

/// Where requests wait for their answers, on the main thread.
class QtHttpFetcher::Desk final : public QObject {
 public:
  Desk() { worker_.moveToThread(&thread_); }

  ~Desk() override {
    if (!thread_.isRunning()) return;
    onWorker([this] {
      worker_.stop();
      thread_.quit();
    });
    thread_.wait();
  }

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
    if (!thread_.isRunning()) thread_.start();
    onWorker([this, id, url, cap] {
      worker_.start(id, url, cap, [this, id](Result<std::string> result) {
        QMetaObject::invokeMethod(this, [this, id, result = std::move(result)] { deliver(id, result); });
      });
    });
    after(seconds, [this, id, seconds] { giveUp(id, seconds); });
  }

  void giveUp(int id, double seconds) {
    if (!waiting_.contains(id)) return;
    onWorker([this, id] { worker_.cancel(id); });
    deliver(id, Failure{"no answer within " + QString::number(seconds).toStdString() + " s"});
  }

  /// Last of all, as `done` may end this.
  void deliver(int id, Result<std::string> result) {
    const auto request = waiting_.extract(id);
    if (!request.empty()) request.mapped()(std::move(result));
  }

  template <typename Action>
  void after(double seconds, Action action) {
    const auto milliseconds = static_cast<int>(std::min(seconds, longestPatience) * 1000);
    QTimer::singleShot(milliseconds, this, std::move(action));
  }

  template <typename Action>
  void onWorker(Action action) {
    QMetaObject::invokeMethod(&worker_, std::move(action), Qt::QueuedConnection);
  }

  int lastId_ = 0;
  RequestPacing pacing_;
  std::unordered_map<int, Done> waiting_;
  QThread thread_;
  HttpWorker worker_;
};

QtHttpFetcher::QtHttpFetcher() : desk_(std::make_unique<Desk>()) {}

QtHttpFetcher::~QtHttpFetcher() = default;

void QtHttpFetcher::get(const std::string& url, std::size_t cap, double seconds, Done done) {
  desk_->accept(QUrl(QString::fromStdString(url), QUrl::StrictMode), static_cast<qint64>(std::min(cap, largestCap)),
                patience(seconds), std::move(done));
}

}  // namespace veloria
