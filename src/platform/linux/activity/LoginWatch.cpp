#include "LoginWatch.h"

#include <unistd.h>

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <utility>

namespace veloria {

namespace {

const auto service = QStringLiteral("org.freedesktop.login1");
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

}  // namespace

LoginWatch::LoginWatch(QDBusConnection bus, const QString& sessionId, FactReport report)
    : bus_(std::move(bus)),
      sessionId_(sessionId),
      report_(std::move(report)),
      sleep_(bus_, {service, managerPath, managerInterface, QStringLiteral("PrepareForSleep")},
             [this](const QDBusMessage& message) {
               const auto sleeping = asBool(message.arguments().value(0));
               if (sleeping && message.arguments().size() == 1) report_(BusFact::systemSleeping, sleeping);
             }) {
  readSleep();
  findSession();
}

void LoginWatch::readSleep() {
  callOnBus(bus_, {service, managerPath, propertiesInterface, QStringLiteral("Get")},
            {managerInterface, QStringLiteral("PreparingForSleep")}, this, [this](const QDBusMessage& reply) {
              if (const auto sleeping = asBool(variantIn(reply))) report_(BusFact::systemSleeping, sleeping);
            });
}

void LoginWatch::callManager(const QString& method, const QVariantList& arguments,
                             std::function<void(const QDBusMessage&)> then) {
  callOnBus(bus_, {service, managerPath, managerInterface, method}, arguments, this, std::move(then));
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
    callOnBus(bus_, {service, *path, propertiesInterface, QStringLiteral("Get")},
              {QStringLiteral("org.freedesktop.login1.User"), QStringLiteral("Display")}, this,
              [this](const QDBusMessage& reply) {
                if (const auto session = sessionIn(variantIn(reply))) follow(*session);
              });
  });
}

void LoginWatch::follow(const QString& session) {
  session_ = std::make_unique<BusProperties>(
      bus_, service, session, QStringLiteral("org.freedesktop.login1.Session"),
      [this](const QVariantMap& properties) { report_(BusFact::sessionHidden, isHidden(properties)); });
}

}  // namespace veloria
