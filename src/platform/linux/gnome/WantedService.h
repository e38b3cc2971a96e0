#pragma once

#include <QDBusConnection>
#include <QObject>

namespace veloria {

/// Tells the extension in GNOME Shell whether the band wants to be seen through the panel: owns the name
/// com.tollmere.Veloria.Panel on the bus, and the property Wanted of the interface of that name. The name goes with
/// this process, however it ends. Main thread; waits for nothing.
class WantedService final : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.tollmere.Veloria.Panel")
  Q_PROPERTY(bool Wanted READ isWanted)

 public:
  explicit WantedService(const QDBusConnection& bus);
  ~WantedService() override;

  bool isWanted() const { return wanted_; }
  void setWanted(bool wanted);

 private:
  void callBus(const char* method, const QVariantList& arguments);

  QDBusConnection bus_;
  bool wanted_ = false;
};

}  // namespace veloria
