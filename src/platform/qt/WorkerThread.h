#pragma once

#include <QMetaObject>
#include <QThread>
#include <utility>

namespace veloria {

/// A QObject on a thread of its own, for work that may wait. `Worker` has a stop() that ends whatever belongs to the
/// thread. Made, used and destroyed on one thread; what the worker's reports touch must outlive this.
template <typename Worker>
class WorkerThread {
 public:
  template <typename... Arguments>
  explicit WorkerThread(Arguments&&... arguments) : worker_(std::forward<Arguments>(arguments)...) {
    worker_.moveToThread(&thread_);
  }
  /// Waits for the work at hand, after which stop() is called and the thread ends.
  ~WorkerThread() {
    if (!thread_.isRunning()) return;
    post([this](Worker& worker) {
      worker.stop();
      thread_.quit();
    });
    thread_.wait();
  }
  WorkerThread(const WorkerThread&) = delete;
  WorkerThread& operator=(const WorkerThread&) = delete;

  /// Does `work` on the thread, after what was posted before. The thread starts with the first work.
  template <typename Work>
  void post(Work work) {
    if (!thread_.isRunning()) thread_.start();
    QMetaObject::invokeMethod(
        &worker_, [this, work = std::move(work)]() mutable { work(worker_); }, Qt::QueuedConnection);
  }

  /// For what the worker lets any thread read.
  const Worker& worker() const { return worker_; }

 private:
  QThread thread_;
  Worker worker_;
};

}  // namespace veloria
