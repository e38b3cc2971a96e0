#include "BusWorker.h"

#include <unistd.h>

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <utility>

#include "platform/linux/activity/ActivityFacts.h"
#include "platform/linux/bus/BusCall.h"
#include "platform/linux/bus/BusService.h"

namespace veloria {

namespace {

const auto loginService = QStringLiteral("org.freedesktop.login1");
const auto powerService = QStringLiteral("org.freedesktop.UPower");
const auto powerPath = QStringLiteral("/org/freedesktop/UPower");
const auto managerPath = QStringLiteral("/org/freedesktop/login1");
const auto managerInterface = QStringLiteral("org.freedesktop.login1.Manager");
const auto propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

/// The session in a user's property Display, which is a pair of its name and its path.
std::optional<QString> sessionIn(const QVariant& display) {
  if (display.metaType() != QMetaType::fromType<QDBusArgument>()) return std::nullopt;
  const auto argument = qvariant_cast<QDBusArgument>(display);
  if (argument.currentSignature() != QLatin1String("(so)")) return std::nullopt;
  QString name;
  QDBusObjectPath path;
  argument.beginStructure();
  argument >> name >> path;
  argument.endStructure();
  return path.path().size() > 1 ? std::optional(path.path()) : std::nullopt;
}

bool isHidden(const QVariantMap& session) {
  const bool active = asBool(session.value(QStringLiteral("Active"))).value_or(true);
  const bool locked = asBool(session.value(QStringLiteral("LockedHint"))).value_or(false);
  return !active || locked;
}

/// Follows one run of the login manager: when the system sleeps, and whether the session of this process is visible.
/// That session is the one that the login manager has for the process, else `sessionId` (may be empty), else the one of
/// the user's display (programs of the user's service manager are in none); without any, the session is not reported.
/// Never delays or prevents sleep.
class LoginWatch final : public QObject {
 public:
  LoginWatch(QDBusConnection bus, const QString& sessionId, FactReport report);

 private:
  void readSleep();
  void findSession();
  void findSessionById();
  void findSessionOfDisplay();
  void callManager(const QString& method, const QVariantList& arguments, std::function<void(const QDBusMessage&)> then);
  void follow(const QString& session);

  QDBusConnection bus_;
  QString sessionId_;
  FactReport report_;
  BusSignal sleep_;
  std::unique_ptr<BusReader> session_;
};

LoginWatch::LoginWatch(QDBusConnection bus, const QString& sessionId, FactReport report)
    : bus_(std::move(bus)),
      sessionId_(sessionId),
      report_(std::move(report)),
      sleep_(bus_, {loginService, managerPath, managerInterface, QStringLiteral("PrepareForSleep")},
             [this](const QDBusMessage& message) {
               const auto sleeping = asBool(message.arguments().value(0));
               if (sleeping && message.arguments().size() == 1) report_(BusFact::systemSleeping, sleeping);
             }) {
  readSleep();
  findSession();
}

void LoginWatch::readSleep() {
  callOnBus(bus_, {loginService, managerPath, propertiesInterface, QStringLiteral("Get")},
            {managerInterface, QStringLiteral("PreparingForSleep")}, this, [this](const QDBusMessage& reply) {
              if (const auto sleeping = asBool(variantIn(reply))) report_(BusFact::systemSleeping, sleeping);
            });
}

void LoginWatch::callManager(const QString& method, const QVariantList& arguments,
                             std::function<void(const QDBusMessage&)> then) {
  callOnBus(bus_, {loginService, managerPath, managerInterface, method}, arguments, this, std::move(then));
}

void LoginWatch::findSession() {
  callManager(QStringLiteral("GetSessionByPID"), {static_cast<uint>(getpid())}, [this](const QDBusMessage& reply) {
    const auto path = pathIn(reply);
    path ? follow(*path) : findSessionById();
  });
}

void LoginWatch::findSessionById() {
  if (sessionId_.isEmpty()) return findSessionOfDisplay();
  callManager(QStringLiteral("GetSession"), {sessionId_}, [this](const QDBusMessage& reply) {
    const auto path = pathIn(reply);
    path ? follow(*path) : findSessionOfDisplay();
  });
}

void LoginWatch::findSessionOfDisplay() {
  callManager(QStringLiteral("GetUser"), {static_cast<uint>(getuid())}, [this](const QDBusMessage& user) {
    const auto path = pathIn(user);
    if (!path) return;
    callOnBus(bus_, {loginService, *path, propertiesInterface, QStringLiteral("Get")},
              {QStringLiteral("org.freedesktop.login1.User"), QStringLiteral("Display")}, this,
              [this](const QDBusMessage& reply) {
                if (const auto session = sessionIn(variantIn(reply))) follow(*session);
              });
  });
}

void LoginWatch::follow(const QString& session) {
  session_ = followProperties(
      bus_, loginService, session, QStringLiteral("org.freedesktop.login1.Session"),
      [this](const QVariantMap& properties) { report_(BusFact::sessionHidden, isHidden(properties)); });
}

/// A screen saver's name on the session bus, which is its interface's name too, and the path of its object.
struct SaverName {
  QString service;
  QString path;
};

/// Follows one run of a screen saver.
class SaverWatch final : public QObject {
 public:
  SaverWatch(QDBusConnection bus, const SaverName& name, std::function<void(bool active)> report);

 private:
  void accept(const QDBusMessage& message);

  std::function<void(bool)> report_;
  BusSignal changed_;
};

// Any object of the service may send the signal: some savers have several.
SaverWatch::SaverWatch(QDBusConnection bus, const SaverName& name, std::function<void(bool)> report)
    : report_(std::move(report)),
      changed_(bus, {name.service, QString(), name.service, QStringLiteral("ActiveChanged")},
               [this](const QDBusMessage& message) { accept(message); }) {
  callOnBus(bus, {name.service, name.path, name.service, QStringLiteral("GetActive")}, {}, this,
            [this](const QDBusMessage& reply) {
              if (reply.type() == QDBusMessage::ReplyMessage) accept(reply);
            });
}

void SaverWatch::accept(const QDBusMessage& message) {
  const auto active = asBool(message.arguments().value(0));
  if (active && message.arguments().size() == 1) report_(*active);
}

// Some desktops no longer use the common name, or never did.
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
  readSupplies();
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
        return followProperties(bus, powerService, powerPath, powerService, [this](const auto& all) {
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
  serviceReportsBattery_ = onBattery.has_value();
  if (onBattery) onBattery_ = *onBattery;
  readSupplies();
}

void BusWorker::readSupplies() {
  if (!serviceReportsBattery_) onBattery_ = runsOnBattery(options_.powerSupplies);
}

}  // namespace veloria
