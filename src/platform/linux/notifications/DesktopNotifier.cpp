#include "platform/linux/notifications/DesktopNotifier.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "base/Log.h"
#include "platform/linux/bus/BusCall.h"
#include "platform/linux/bus/BusService.h"

namespace veloria {

namespace {

const auto serviceName = QStringLiteral("org.freedesktop.Notifications");
const auto servicePath = QStringLiteral("/org/freedesktop/Notifications");
constexpr BusCallOptions patient{.patienceSeconds = 30, .startService = true};
constexpr std::size_t mostShown = 8;  // notifications whose actions are remembered
constexpr std::size_t mostActions = 2;
constexpr int expiryMilliseconds = 30000;
constexpr uchar normalUrgency = 1;

BusSignalName serviceSignal(const char* member) {
  return {serviceName, servicePath, serviceName, QString::fromLatin1(member)};
}

/// The key of an action on the bus; `index` is its place in the notification.
QString actionKey(std::size_t index) {
  return QStringLiteral("veloria-%1").arg(index);
}

/// The arguments of Notify for a service with these capabilities: escapes the text if the service reads markup, and
/// uses the other text if it shows no actions.
QVariantList notifyArguments(const Notification& notification, const QStringList& capabilities) {
  const bool withActions = capabilities.contains(QStringLiteral("actions"));
  QString body = QString::fromStdString(withActions ? notification.text : notification.textWithoutActions);
  if (capabilities.contains(QStringLiteral("body-markup"))) body = body.toHtmlEscaped();
  QStringList actions;
  const std::size_t count = withActions ? std::min(notification.actions.size(), mostActions) : 0;
  for (std::size_t i = 0; i < count; ++i) {
    actions << actionKey(i) << QString::fromStdString(notification.actions[i].label);
  }
  return {QStringLiteral("Veloria"),
          0U,
          QStringLiteral("veloria"),
          QString::fromStdString(notification.title),
          body,
          actions,
          QVariantMap{{QStringLiteral("urgency"), QVariant::fromValue(normalUrgency)}},
          expiryMilliseconds};
}

}  // namespace

class DesktopNotifier::Service final : public QObject {
 public:
  Service()
      : bus_(QDBusConnection::sessionBus()),
        invoked_(bus_, serviceSignal("ActionInvoked"), [this](const auto& message) { runAction(message); }),
        closed_(bus_, serviceSignal("NotificationClosed"), [this](const auto& message) { forget(message); }) {}

  void show(Notification notification, std::function<void()> delivered) {
    call("GetCapabilities", {}, "as",
         [this, notification = std::move(notification), delivered = std::move(delivered)](const QDBusMessage& reply) {
           send(notification, reply.arguments().constFirst().toStringList(), delivered);
         });
  }

 private:
  void send(const Notification& notification, const QStringList& capabilities, const std::function<void()>& delivered) {
    call("Notify", notifyArguments(notification, capabilities), "u",
         [this, actions = notification.actions, delivered](const QDBusMessage& reply) {
           shown_[reply.arguments().constFirst().toUInt()] = actions;
           if (shown_.size() > mostShown) shown_.erase(shown_.begin());
           if (delivered) delivered();
         });
  }

  /// `then` gets a reply of this signature; any other reply is logged and ignored.
  template <typename Then>
  void call(const char* method, const QVariantList& arguments, const char* signature, Then then) {
    callOnBus(
        bus_, {serviceName, servicePath, serviceName, QString::fromLatin1(method)}, arguments, this,
        [signature, then = std::move(then)](const QDBusMessage& reply) {
          if (isReply(reply, signature)) return then(reply);
          NimbraLog::debug("no notification: " + reply.errorMessage().toStdString());
        },
        patient);
  }

  void runAction(const QDBusMessage& message) {
    if (message.signature() != QLatin1String("us")) return;
    const auto notification = shown_.find(message.arguments().at(0).toUInt());
    if (notification == shown_.end()) return;
    const auto actions = notification->second;  // an action may show another notification
    for (std::size_t i = 0; i < actions.size(); ++i) {
      if (message.arguments().at(1).toString() == actionKey(i)) return actions[i].chosen();
    }
  }

  void forget(const QDBusMessage& message) {
    if (message.signature() == QLatin1String("uu")) shown_.erase(message.arguments().at(0).toUInt());
  }

  QDBusConnection bus_;
  BusSignal invoked_;
  BusSignal closed_;
  std::map<uint, std::vector<Notification::Action>> shown_;
};

DesktopNotifier::DesktopNotifier() : service_(std::make_unique<Service>()) {}

DesktopNotifier::~DesktopNotifier() = default;

void DesktopNotifier::show(Notification notification, std::function<void()> delivered) {
  service_->show(std::move(notification), std::move(delivered));
}

}  // namespace veloria
