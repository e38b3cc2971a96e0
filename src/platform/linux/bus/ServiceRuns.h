#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>

namespace veloria {

/// Keeps one follower for each run of a service: services come late, end, and start again with another state. The first
/// follower is made at once, whether the service runs or not. Waits for the bus when it is made.
class ServiceRuns final : public QObject {
 public:
  using MakeFollower = std::function<std::unique_ptr<QObject>()>;
  /// `forget` is called when a run has ended, after its follower is gone.
  ServiceRuns(QDBusConnection bus, const QString& service, MakeFollower make, std::function<void()> forget);

 private:
  void begin(const QString& owner);

  MakeFollower make_;
  std::function<void()> forget_;
  QDBusServiceWatcher watcher_;
  std::unique_ptr<QObject> follower_;
};

}  // namespace veloria
