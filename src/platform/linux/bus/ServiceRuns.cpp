#include "platform/linux/bus/ServiceRuns.h"

#include <utility>

namespace veloria {

ServiceRuns::ServiceRuns(QDBusConnection bus, const QString& service, MakeFollower make, std::function<void()> forget)
    : make_(std::move(make)),
      forget_(std::move(forget)),
      watcher_(service, bus, QDBusServiceWatcher::WatchForOwnerChange),
      follower_(make_()) {
  connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& owner) { begin(owner); });
}

void ServiceRuns::begin(const QString& owner) {
  follower_.reset();
  forget_();
  if (!owner.isEmpty()) follower_ = make_();
}

}  // namespace veloria
