#pragma once

#include <QObject>
#include <QString>
#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "platform/linux/bus/BusLink.h"

namespace veloria {

/// Facts that services on the buses report.
enum class BusFact { systemSleeping, sessionHidden, saverActive };

/// Reports a fact; no value: it is unknown, or no longer known.
using FactReport = std::function<void(BusFact fact, std::optional<bool> value)>;

/// Queries the buses and the kernel on a thread that may wait. Call everything on that thread unless marked otherwise.
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
  /// Reads the power supplies unless a service reports the battery.
  void readSupplies();

  /// The last known value. Any thread.
  bool isOnBattery() const { return onBattery_; }
  /// True if only readSupplies() updates isOnBattery(). Any thread.
  bool dependsOnSupplies() const { return !serviceReportsBattery_; }

 private:
  BusLink::Followers followSystem(const QDBusConnection& bus);
  BusLink::Followers followSession(const QDBusConnection& bus);
  void setSaver(const QString& service, bool active);
  void setBattery(std::optional<bool> onBattery);

  Options options_;
  FactReport report_;
  std::atomic<bool> onBattery_{false};
  std::atomic<bool> serviceReportsBattery_{false};
  std::set<QString> activeSavers_;
  std::unique_ptr<BusLink> system_;
  std::unique_ptr<BusLink> session_;
};

}  // namespace veloria
