#pragma once

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <cstdint>
#include <functional>
#include <optional>

#include "platform/linux/bus/BusService.h"

struct xcb_connection_t;

namespace veloria {

/// The system tray (XEmbed) of the X server that the event loop is connected to; none if there is no X server. Main
/// thread, with a QGuiApplication.
class X11Tray {
 public:
  X11Tray();

  /// True if one runs. Asks the server.
  bool runs() const;

  /// True if this event of the X connection announces a tray.
  bool isAnnouncedBy(const void* xcbEvent) const;

 private:
  xcb_connection_t* server_;
  std::uint32_t manager_ = 0;  // atoms
  std::uint32_t selection_ = 0;
};

/// What can show a status icon now.
struct TrayHosts {
  bool statusNotifier = false;  ///< a host of the StatusNotifierItem protocol, on the session bus
  bool x11 = false;             ///< a system tray on the X server in use
  bool operator==(const TrayHosts&) const = default;
};

/// Follows the hosts by their events, without polling. Main thread, with a QGuiApplication.
class TrayHostsWatch final : public QObject, private QAbstractNativeEventFilter {
 public:
  /// `changed` is called first when the hosts are known, never before the constructor has returned, and then whenever
  /// they change. If a watcher of status icons does not answer in ten seconds, neither it nor an X11 tray counts: the
  /// library would block on that watcher in both cases.
  TrayHostsWatch(const QDBusConnection& bus, std::function<void(TrayHosts)> changed);
  ~TrayHostsWatch() override;

 private:
  enum class Answer { host, noHost, silence };

  void ask();
  void accept(const QDBusMessage& reply);
  void report();
  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

  QDBusConnection bus_;
  std::function<void(TrayHosts)> changed_;
  std::optional<Answer> answer_;
  std::optional<TrayHosts> reported_;
  unsigned questions_ = 0;
  X11Tray x11_;
  QDBusServiceWatcher watcher_;
  BusSignal hostCame_;
  BusSignal hostWent_;
};

}  // namespace veloria
