#include "HttpWorker.h"

#include <QNetworkProxyFactory>
#include <utility>

#include "UrlRules.h"

namespace veloria {

namespace {

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

}  // namespace

void HttpWorker::start(int id, const QUrl& url, qint64 cap, HttpTransfer::Ended ended) {
  if (!manager_) manager_ = makeManager();
  transfers_[id] = std::make_unique<HttpTransfer>(*manager_, url, cap,
                                                  [this, id, ended = std::move(ended)](Result<std::string> result) {
                                                    QMetaObject::invokeMethod(
                                                        this, [this, id] { cancel(id); }, Qt::QueuedConnection);
                                                    ended(std::move(result));
                                                  });
}

void HttpWorker::cancel(int id) {
  transfers_.erase(id);
}

void HttpWorker::stop() {
  transfers_.clear();
  manager_.reset();
}

}  // namespace veloria
