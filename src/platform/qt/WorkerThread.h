#pragma once

#include <QMetaObject>
#include <QThread>
#include <utility>

namespace veloria {

/// A QObject on a thread of its own, for work that may wait. `Worker` has a stop() that ends everything that belongs to
/// the thread. Make, use and destroy it on one thread; everything that the worker's reports touch must outlive it.
template <typename Worker>
class WorkerThread {
 public:
  template <typename... Arguments>
  explicit WorkerThread(Arguments&&... arguments) : worker_(std::forward<Arguments>(arguments)...) {
    worker_.moveToThread(&thread_);
  }
  /// Waits for the posted work, calls stop() and ends the thread.
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

  /// Runs `work` on the thread, after everything that was posted before. The first call starts the thread.
  template <typename Work>
  void post(Work work) {
    if (!thread_.isRunning()) thread_.start();
    QMetaObject::invokeMethod(
        &worker_, [this, work = std::move(work)]() mutable { work(worker_); }, Qt::QueuedConnection);
  }

  /// For members that any thread may read.
  const Worker& worker() const { return worker_; }

 private:
  QThread thread_;
  Worker worker_;
};

}  // namespace veloria
