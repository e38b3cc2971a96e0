#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>

namespace veloria {

/// What a signal of a D-Bus service is called by.
struct BusSignalName {
  QString service;
  QString path;  ///< empty: any object of the service
  QString interface;
  QString member;
  QStringList arguments = {};  ///< what the first arguments must be
};

/// Hears one signal of one service, from whoever owns the service's name at the time, as long as it lives. The signal
/// may carry anything. Waits for the bus when it is made; calls back on the thread that it was made on.
class BusSignal final : public QObject {
  Q_OBJECT

 public:
  using Handler = std::function<void(const QDBusMessage&)>;
  BusSignal(QDBusConnection bus, const BusSignalName& name, Handler handler);

 private Q_SLOTS:
  void receive(const QDBusMessage& message);

 private:
  Handler handler_;
};

}  // namespace veloria
