#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Environment.h"
#include "platform/linux/bus/BusService.h"

namespace veloria {

/// Addresses of the two message buses, in D-Bus's own form; empty if there is none.
struct BusAddresses {
  std::string system;
  std::string session;
};

/// From DBUS_SYSTEM_BUS_ADDRESS (or the well-known place), and DBUS_SESSION_BUS_ADDRESS (or "bus" in XDG_RUNTIME_DIR).
/// An address that would start a bus ("autolaunch:") counts as none.
BusAddresses busAddresses(const Environment& environment);

/// A private connection to a message bus. Retries every `retrySeconds` if there is none or it has ended (0: only on
/// open()). Connecting blocks, for up to half a minute if a bus accepts but does not answer, so this belongs on a
/// thread that may wait.
class BusLink final : public QObject {
 public:
  using Followers = std::vector<std::unique_ptr<QObject>>;
  struct Handlers {
    std::function<Followers(QDBusConnection)> connected;  ///< the followers live as long as the connection
    std::function<void()> ended;                          ///< after the followers are gone
  };
  BusLink(const std::string& address, double retrySeconds, Handlers handlers);
  ~BusLink() override;

  /// Connects if there is no connection.
  void open();
  bool isOpen() const { return disconnected_ != nullptr; }

 private:
  void close();
  void lost();
  void retryLater();

  QString address_;
  QString name_;
  Handlers handlers_;
  QTimer retry_;
  std::unique_ptr<BusSignal> disconnected_;
  Followers followers_;
};

}  // namespace veloria
