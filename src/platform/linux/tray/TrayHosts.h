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

#include "X11Tray.h"
#include "platform/linux/bus/BusSignal.h"

namespace veloria {

/// What could show a status icon now.
struct TrayHosts {
  bool statusNotifier = false;  ///< a host of the StatusNotifierItem protocol, on the session bus
  bool x11 = false;             ///< a system tray on the X server in use
  bool operator==(const TrayHosts&) const = default;
};

/// Follows the hosts as they come and go; it is told, and never wakes up to look. Main thread, with a QGuiApplication.
class TrayHostsWatch final : public QObject, private QAbstractNativeEventFilter {
 public:
  /// `changed` is called first when the hosts are known, which is never before the constructor has returned, and then
  /// whenever they differ. A watcher of status icons that does not answer in ten seconds counts as none, and so does an
  /// X11 tray beside it: the library would wait for that watcher too, with everything else.
  TrayHostsWatch(const QDBusConnection& bus, std::function<void(TrayHosts)> changed);
  ~TrayHostsWatch() override;

 private:
  enum class Answer { host, noHost, silence };

  void ask();
  void take(const QDBusMessage& reply);
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
