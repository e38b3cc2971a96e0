#include "TrayHosts.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <QMetaObject>
#include <QVariant>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "platform/linux/bus/BusCall.h"

namespace veloria {

namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

constexpr std::uint8_t sentByAnotherProgram = 0x80;

xcb_connection_t* connection() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 != nullptr ? x11->connection() : nullptr;
}

xcb_atom_t atom(xcb_connection_t* server, const std::string& name) {
  const auto cookie = xcb_intern_atom(server, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
  const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(xcb_intern_atom_reply(server, cookie, nullptr));
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

std::string selectionName() {
  char* host = nullptr;
  int display = 0;
  int screen = 0;
  const bool parsed = xcb_parse_display(nullptr, &host, &display, &screen) != 0;
  const std::unique_ptr<char, Free> owned(host);
  return "_NET_SYSTEM_TRAY_S" + std::to_string(parsed ? screen : 0);
}

const auto watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto watcherPath = QStringLiteral("/StatusNotifierWatcher");

BusSignalName watcherSignal(const char* member) {
  return {watcherService, watcherPath, watcherService, QString::fromLatin1(member)};
}

}  // namespace

X11Tray::X11Tray() : server_(connection()) {
  if (server_ == nullptr) return;
  manager_ = atom(server_, "MANAGER");
  selection_ = atom(server_, selectionName());
}

bool X11Tray::runs() const {
  if (server_ == nullptr) return false;
  const auto cookie = xcb_get_selection_owner(server_, selection_);
  const std::unique_ptr<xcb_get_selection_owner_reply_t, Free> reply(
      xcb_get_selection_owner_reply(server_, cookie, nullptr));
  return reply && reply->owner != XCB_WINDOW_NONE;
}

bool X11Tray::isAnnouncedBy(const void* xcbEvent) const {
  const auto* event = static_cast<const xcb_client_message_event_t*>(xcbEvent);
  return (event->response_type & ~sentByAnotherProgram) == XCB_CLIENT_MESSAGE && event->format == 32 &&
         event->type == manager_ && event->data.data32[1] == selection_;
}

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
              if (question == questions_) accept(reply);
            });
}

void TrayHostsWatch::accept(const QDBusMessage& reply) {
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

// Later, because the handler talks to the server, which must not happen inside an event.
bool TrayHostsWatch::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
  if (eventType == "xcb_generic_event_t" && x11_.isAnnouncedBy(message)) {
    QMetaObject::invokeMethod(
        this, [this] { report(); }, Qt::QueuedConnection);
  }
  return false;
}

}  // namespace veloria
