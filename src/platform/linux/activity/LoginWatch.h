#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <memory>
#include <vector>

#include "BusFact.h"
#include "platform/linux/bus/BusCall.h"
#include "platform/linux/bus/BusProperties.h"
#include "platform/linux/bus/BusSignal.h"

namespace veloria {

/// Follows one run of the login manager: when the system sleeps, and whether the session that this process is in can be
/// seen. That session is the one the login manager knows for the process, else `sessionId` (may be empty), else the one
/// that the user's display belongs to (programs of the user's service manager are in none); without any there is
/// nothing to tell. Nothing here ever delays or prevents sleep.
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
  std::unique_ptr<BusProperties> session_;
};

}  // namespace veloria
