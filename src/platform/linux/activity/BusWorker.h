#pragma once

#include <QObject>
#include <QString>
#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "BusFact.h"
#include "platform/linux/bus/BusAddresses.h"
#include "platform/linux/bus/BusLink.h"

namespace veloria {

/// What is asked of the buses and of the kernel, on a thread that may wait. Everything but what is marked otherwise
/// happens on that thread.
class BusWorker final : public QObject {
 public:
  struct Options {
    BusAddresses buses;
    std::string sessionId;
    std::filesystem::path powerSupplies;
    double retrySeconds = 60;
  };
  BusWorker(Options options, FactReport report);

  void start();
  void stop();
  /// Looks at the power supplies unless a service tells.
  void lookAtSupplies();

  /// What is known now. Any thread.
  bool isOnBattery() const { return onBattery_; }
  /// True when lookAtSupplies() is all there is. Any thread.
  bool dependsOnSupplies() const { return !serviceTellsBattery_; }

 private:
  BusLink::Followers followSystem(const QDBusConnection& bus);
  BusLink::Followers followSession(const QDBusConnection& bus);
  void setSaver(const QString& service, bool active);
  void setBattery(std::optional<bool> onBattery);

  Options options_;
  FactReport report_;
  std::atomic<bool> onBattery_{false};
  std::atomic<bool> serviceTellsBattery_{false};
  std::set<QString> activeSavers_;
  std::unique_ptr<BusLink> system_;
  std::unique_ptr<BusLink> session_;
};

}  // namespace veloria
