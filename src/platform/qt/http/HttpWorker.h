#pragma once

#include <QNetworkAccessManager>
#include <QObject>
#include <QUrl>
#include <memory>
#include <unordered_map>

#include "HttpTransfer.h"

namespace veloria {

/// The requests that are under way, on a thread of their own: what looks up the system's proxy, loads the TLS library
/// or reads certificates may take its time there. All calls, but for the constructor and destructor, on that thread.
class HttpWorker final : public QObject {
 public:
  /// Sends request number `id`. `ended` is called on this thread, later than this call.
  void start(int id, const QUrl& url, qint64 cap, HttpTransfer::Ended ended);
  /// Ends a request without a word; one that has ended already is no error.
  void cancel(int id);
  /// Ends all requests and everything that belongs to the thread; it comes before the thread's end.
  void stop();

 private:
  std::unique_ptr<QNetworkAccessManager> manager_;
  std::unordered_map<int, std::unique_ptr<HttpTransfer>> transfers_;
};

}  // namespace veloria
