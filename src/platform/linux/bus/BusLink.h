#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/bus/BusSignal.h"

namespace veloria {

/// A connection of its own to a message bus; tries again every `retrySeconds` when there is none or it has ended (0:
/// only when it is told to). It waits while it connects (for up to half a minute when a bus accepts but does not
/// answer), so it lives on a thread that may.
class BusLink final : public QObject {
 public:
  using Followers = std::vector<std::unique_ptr<QObject>>;
  struct Handlers {
    std::function<Followers(QDBusConnection)> connected;  ///< what it returns lives as long as the connection
    std::function<void()> ended;                          ///< after the followers are gone
  };
  BusLink(const std::string& address, double retrySeconds, Handlers handlers);
  ~BusLink() override;

  /// Connects unless it is connected.
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
