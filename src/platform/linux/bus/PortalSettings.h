#pragma once

#include <QDBusConnection>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <functional>
#include <memory>
#include <vector>

#include "platform/linux/bus/BusSignal.h"

namespace veloria {

inline const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");

/// Follows settings of the desktop portal: reads them now, on read(), and whenever the portal says that one has
/// changed. A burst of changes is read twice at most. Never starts the portal. Waits for the bus when it is made, never
/// for the portal; calls back on the thread that it was made on.
class PortalSettings final : public QObject {
 public:
  /// By namespace, then by key.
  using Values = QMap<QString, QVariantMap>;

  /// `handler` is called after every read, later; with no values when the portal doesn't run or answers nonsense.
  PortalSettings(QDBusConnection bus, const QStringList& namespaces, std::function<void(const Values&)> handler);

  void read();

 private:
  QDBusConnection bus_;
  QStringList namespaces_;
  std::function<void(const Values&)> handler_;
  bool reading_ = false;
  bool changedMeanwhile_ = false;
  std::vector<std::unique_ptr<BusSignal>> changes_;
};

}  // namespace veloria
