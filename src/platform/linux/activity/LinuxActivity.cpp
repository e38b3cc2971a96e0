#include "platform/linux/activity/LinuxActivity.h"

#include <QObject>
#include <atomic>
#include <optional>
#include <utility>

#include "BusWorker.h"
#include "platform/linux/activity/ActivityFacts.h"
#include "platform/qt/WorkerThread.h"

namespace veloria {

/// The main thread's side.
class LinuxActivity::Parts final : public QObject {
 public:
  explicit Parts(BusWorker::Options options)
      : thread_(std::move(options), [this](BusFact fact, std::optional<bool> value) {
          QMetaObject::invokeMethod(this, [this, fact, value] { accept(fact, value.value_or(false)); });
        }) {
    thread_.post([](BusWorker& worker) { worker.start(); });
  }

  void setHandler(std::function<void(Notification)> handler) {
    handler_ = std::move(handler);
    for (const Notification each : facts_.initialNotifications()) notify(each);
  }

  void setDisplaysOff(bool off) { notify(facts_.setDisplaysOff(off)); }

  bool isOnBattery() {
    if (thread_.worker().dependsOnSupplies() && !reading_.exchange(true)) {
      thread_.post([this](BusWorker& worker) {
        worker.readSupplies();
        reading_ = false;
      });
    }
    return thread_.worker().isOnBattery();
  }

 private:
  void accept(BusFact fact, bool value) {
    switch (fact) {
      case BusFact::systemSleeping:
        return notify(facts_.setSystemSleeping(value));
      case BusFact::sessionHidden:
        return notify(facts_.setSessionHidden(value));
      case BusFact::saverActive:
        return notify(facts_.setSaverActive(value));
    }
  }

  void notify(std::optional<Notification> notification) {
    if (notification && handler_) handler_(*notification);
  }

  ActivityFacts facts_;
  std::function<void(Notification)> handler_;
  std::atomic<bool> reading_{false};
  WorkerThread<BusWorker> thread_;  ///< last: it reports to the other members until it ends
};

LinuxActivity::LinuxActivity(const Options& options)
    : parts_(std::make_unique<Parts>(BusWorker::Options{busAddresses(options.environment),
                                                        options.environment("XDG_SESSION_ID").value_or(std::string()),
                                                        options.powerSupplies, options.retrySeconds})) {}

LinuxActivity::~LinuxActivity() = default;

void LinuxActivity::setHandler(std::function<void(Notification)> handler) {
  parts_->setHandler(std::move(handler));
}

void LinuxActivity::setDisplaysOff(bool off) {
  parts_->setDisplaysOff(off);
}

bool LinuxActivity::isOnBattery() {
  return parts_->isOnBattery();
}

}  // namespace veloria
