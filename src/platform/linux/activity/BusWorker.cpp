#include "BusWorker.h"

#include <utility>

#include "LoginWatch.h"
#include "SaverWatch.h"
#include "platform/linux/activity/PowerSupplies.h"
#include "platform/linux/bus/BusProperties.h"
#include "platform/linux/bus/ServiceRuns.h"

namespace veloria {

namespace {

const auto loginService = QStringLiteral("org.freedesktop.login1");
const auto powerService = QStringLiteral("org.freedesktop.UPower");
const auto powerPath = QStringLiteral("/org/freedesktop/UPower");

// Desktops that have left the common name, or never taken it.
const SaverName savers[] = {
    {QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("/org/freedesktop/ScreenSaver")},
    {QStringLiteral("org.gnome.ScreenSaver"), QStringLiteral("/org/gnome/ScreenSaver")},
    {QStringLiteral("org.cinnamon.ScreenSaver"), QStringLiteral("/org/cinnamon/ScreenSaver")},
    {QStringLiteral("org.mate.ScreenSaver"), QStringLiteral("/org/mate/ScreenSaver")},
    {QStringLiteral("org.xfce.ScreenSaver"), QStringLiteral("/org/xfce/ScreenSaver")},
};

std::unique_ptr<BusLink> link(const std::string& address, double retrySeconds, BusLink::Handlers handlers) {
  if (address.empty()) return nullptr;
  auto result = std::make_unique<BusLink>(address, retrySeconds, std::move(handlers));
  result->open();
  return result;
}

}  // namespace

BusWorker::BusWorker(Options options, FactReport report) : options_(std::move(options)), report_(std::move(report)) {}

void BusWorker::start() {
  lookAtSupplies();
  system_ = link(options_.buses.system, options_.retrySeconds,
                 {[this](const QDBusConnection& bus) { return followSystem(bus); },
                  [this] {
                    report_(BusFact::systemSleeping, std::nullopt);
                    report_(BusFact::sessionHidden, std::nullopt);
                    setBattery(std::nullopt);
                  }});
  session_ = link(options_.buses.session, options_.retrySeconds,
                  {[this](const QDBusConnection& bus) { return followSession(bus); },
                   [this] {
                     activeSavers_.clear();
                     report_(BusFact::saverActive, std::nullopt);
                   }});
}

void BusWorker::stop() {
  system_.reset();
  session_.reset();
}

BusLink::Followers BusWorker::followSystem(const QDBusConnection& bus) {
  BusLink::Followers followers;
  followers.push_back(std::make_unique<ServiceRuns>(
      bus, loginService,
      [this, bus] { return std::make_unique<LoginWatch>(bus, QString::fromStdString(options_.sessionId), report_); },
      [this] {
        report_(BusFact::systemSleeping, std::nullopt);
        report_(BusFact::sessionHidden, std::nullopt);
      }));
  followers.push_back(std::make_unique<ServiceRuns>(
      bus, powerService,
      [this, bus] {
        return std::make_unique<BusProperties>(bus, powerService, powerPath, powerService, [this](const auto& all) {
          setBattery(asBool(all.value(QStringLiteral("OnBattery"))));
        });
      },
      [this] { setBattery(std::nullopt); }));
  return followers;
}

BusLink::Followers BusWorker::followSession(const QDBusConnection& bus) {
  BusLink::Followers followers;
  for (const SaverName& name : savers) {
    followers.push_back(std::make_unique<ServiceRuns>(
        bus, name.service,
        [this, bus, name] {
          return std::make_unique<SaverWatch>(bus, name, [this, name](bool active) { setSaver(name.service, active); });
        },
        [this, name] { setSaver(name.service, false); }));
  }
  return followers;
}

void BusWorker::setSaver(const QString& service, bool active) {
  active ? static_cast<void>(activeSavers_.insert(service)) : static_cast<void>(activeSavers_.erase(service));
  report_(BusFact::saverActive, !activeSavers_.empty());
}

void BusWorker::setBattery(std::optional<bool> onBattery) {
  serviceTellsBattery_ = onBattery.has_value();
  if (onBattery) onBattery_ = *onBattery;
  lookAtSupplies();
}

void BusWorker::lookAtSupplies() {
  if (!serviceTellsBattery_) onBattery_ = runsOnBattery(options_.powerSupplies);
}

}  // namespace veloria
