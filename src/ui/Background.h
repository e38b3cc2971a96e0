#pragma once

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>
#include <memory>
#include <utility>

namespace veloria {

/// Runs `work` on a pool thread, then calls `done` with its result on the main thread, unless `owner` is gone by then.
/// Call it on the main thread. `work` must not throw or touch `owner`; what it captures must be usable on any thread
/// until the program ends.
template <typename Work, typename Done>
void runInBackground(QObject* owner, Work work, Done done) {
  QThreadPool::globalInstance()->start([held = QPointer<QObject>(owner), work = std::move(work), done] {
    auto result = std::make_shared<decltype(work())>(work());
    QCoreApplication* application = QCoreApplication::instance();  // its destructor waits for this thread
    if (application == nullptr) return;
    QMetaObject::invokeMethod(
        application,
        [held, done, result] {
          if (held) done(std::move(*result));
        },
        Qt::QueuedConnection);
  });
}

}  // namespace veloria
