#include "platform/linux/activity/LinuxActivity.h"

#include <QObject>
#include <QThread>
#include <atomic>
#include <optional>
#include <utility>

#include "BusWorker.h"
#include "platform/linux/activity/ActivityFacts.h"

namespace veloria {

/// The main thread's side.
class LinuxActivity::Desk final : public QObject {
 public:
  explicit Desk(BusWorker::Options options)
      : worker_(std::move(options), [this](BusFact fact, std::optional<bool> value) {
          QMetaObject::invokeMethod(this, [this, fact, value] { take(fact, value.value_or(false)); });
        }) {
    worker_.moveToThread(&thread_);
    thread_.start();
    onWorker([this] { worker_.start(); });
  }

  ~Desk() override {
    onWorker([this] {
      worker_.stop();
      thread_.quit();
    });
    thread_.wait();
  }

  void setHandler(std::function<void(Notification)> handler) {
    handler_ = std::move(handler);
    for (const Notification each : facts_.departures()) tell(each);
  }

  void setDisplaysOff(bool off) { tell(facts_.setDisplaysOff(off)); }

  bool isOnBattery() {
    if (worker_.dependsOnSupplies() && !looking_.exchange(true)) {
      onWorker([this] {
        worker_.lookAtSupplies();
        looking_ = false;
      });
    }
    return worker_.isOnBattery();
  }

 private:
  void take(BusFact fact, bool value) {
    switch (fact) {
      case BusFact::systemSleeping:
        return tell(facts_.setSystemSleeping(value));
      case BusFact::sessionHidden:
        return tell(facts_.setSessionHidden(value));
      case BusFact::saverActive:
        return tell(facts_.setSaverActive(value));
    }
  }

  void tell(std::optional<Notification> notification) {
    if (notification && handler_) handler_(*notification);
  }

  template <typename Action>
  void onWorker(Action action) {
    QMetaObject::invokeMethod(&worker_, std::move(action), Qt::QueuedConnection);
  }

  ActivityFacts facts_;
  std::function<void(Notification)> handler_;
  std::atomic<bool> looking_{false};
  QThread thread_;
  BusWorker worker_;
};

LinuxActivity::LinuxActivity(const Options& options)
    : desk_(std::make_unique<Desk>(BusWorker::Options{busAddresses(options.environment),
                                                      options.environment("XDG_SESSION_ID").value_or(std::string()),
                                                      options.powerSupplies, options.retrySeconds})) {}

LinuxActivity::~LinuxActivity() = default;

void LinuxActivity::setHandler(std::function<void(Notification)> handler) {
  desk_->setHandler(std::move(handler));
}

void LinuxActivity::setDisplaysOff(bool off) {
  desk_->setDisplaysOff(off);
}

bool LinuxActivity::isOnBattery() {
  return desk_->isOnBattery();
}

}  // namespace veloria
