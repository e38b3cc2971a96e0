#include "TrayHosts.h"

#include <QGuiApplication>
#include <QMetaObject>
#include <QVariant>
#include <utility>

#include "platform/linux/bus/BusCall.h"

namespace veloria {

namespace {

const auto watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto watcherPath = QStringLiteral("/StatusNotifierWatcher");

BusSignalName watcherSignal(const char* member) {
  return {watcherService, watcherPath, watcherService, QString::fromLatin1(member)};
}

}  // namespace

TrayHostsWatch::TrayHostsWatch(const QDBusConnection& bus, std::function<void(TrayHosts)> changed)
    : bus_(bus),
      changed_(std::move(changed)),
      watcher_(watcherService, bus, QDBusServiceWatcher::WatchForOwnerChange),
      hostCame_(bus, watcherSignal("StatusNotifierHostRegistered"), [this](const QDBusMessage&) { ask(); }),
      hostWent_(bus, watcherSignal("StatusNotifierHostUnregistered"), [this](const QDBusMessage&) { ask(); }) {
  connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] { ask(); });
  qGuiApp->installNativeEventFilter(this);
  ask();
}

TrayHostsWatch::~TrayHostsWatch() {
  if (qGuiApp != nullptr) qGuiApp->removeNativeEventFilter(this);
}

void TrayHostsWatch::ask() {
  const unsigned question = ++questions_;
  callOnBus(bus_,
            {watcherService, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get")},
            {watcherService, QStringLiteral("IsStatusNotifierHostRegistered")}, this,
            [this, question](const QDBusMessage& reply) {
              if (question == questions_) take(reply);
            });
}

void TrayHostsWatch::take(const QDBusMessage& reply) {
  const bool silent = reply.type() == QDBusMessage::ErrorMessage &&
                      (reply.errorName() == QLatin1String("org.freedesktop.DBus.Error.NoReply") ||
                       reply.errorName() == QLatin1String("org.freedesktop.DBus.Error.Timeout"));
  const bool host = asBool(variantIn(reply)).value_or(false);
  answer_ = silent ? Answer::silence : host ? Answer::host : Answer::noHost;
  report();
}

void TrayHostsWatch::report() {
  if (!answer_) return;
  const TrayHosts hosts{.statusNotifier = *answer_ == Answer::host, .x11 = *answer_ != Answer::silence && x11_.runs()};
  if (reported_ == hosts) return;
  reported_ = hosts;
  changed_(hosts);
}

// Not at once: what is called then talks to the server itself, in the middle of an event.
bool TrayHostsWatch::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
  if (eventType == "xcb_generic_event_t" && x11_.comesWith(message)) {
    QMetaObject::invokeMethod(
        this, [this] { report(); }, Qt::QueuedConnection);
  }
  return false;
}

}  // namespace veloria
