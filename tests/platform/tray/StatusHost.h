#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <functional>
#include <memory>
#include <vector>

#include "PrivateBus.h"
#include "Process.h"

namespace veloria::tests {

/// A line of a menu as a panel gets it; the menu itself is a line too.
struct MenuLine {
  int id = 0;  ///< 0: there is no such line
  QVariantMap properties;
  std::vector<MenuLine> children;

  QString label() const { return properties.value("label").toString(); }
  bool separator() const { return properties.value("type").toString() == "separator"; }
  bool enabled() const { return properties.value("enabled", true).toBool(); }
  bool checked() const { return properties.value("toggle-state").toInt() == 1; }
  /// Labels of the lines, "---" for separators.
  std::vector<QString> labels() const;
  std::vector<QString> checkedLabels() const;
  /// The first line of that label, at any depth.
  MenuLine find(const QString& label) const;
  /// Such as {"Control", "Q"}; empty without one.
  QStringList shortcut() const;
};

/// One picture of an icon: rows of pixels of four bytes, alpha first.
struct IconPicture {
  int width = 0;
  int height = 0;
  QByteArray pixels;

  /// The mean brightness, 0 to 255, of what is opaque; -1 when nothing is.
  int brightness() const;
};

/// A panel that hosts status notifiers: the watcher is a program of its own, and what a panel asks of an icon is asked
/// over another connection to the bus. The icon may be of this very program: while it is asked, the event loop runs.
class StatusHost {
 public:
  /// `waitFor` runs the event loop until a condition holds, and tells whether it came to that.
  StatusHost(PrivateBus& bus, std::function<bool(const std::function<bool()>&)> waitFor);
  ~StatusHost();
  StatusHost(const StatusHost&) = delete;
  StatusHost& operator=(const StatusHost&) = delete;

  void startWatcher(bool withHost = true);
  void stopWatcher() { watcher_.reset(); }
  desktop::ChildProcess& watcher() { return *watcher_; }
  /// A host comes to a watcher that had none.
  void announceHost();

  int registrations();
  bool hasIcon() {
    return waitFor_([this] { return registrations() > 0; });
  }

  /// Of the icon that registered first.
  QVariant property(const QString& name);
  QString toolTip();
  std::vector<IconPicture> pictures();
  MenuLine menu();
  /// Clicks a line of the menu; the icon may do its work later. False when there is no such line.
  bool choose(const QString& label);
  /// "Activate", "SecondaryActivate" or "ContextMenu".
  void click(const QString& method);

 private:
  QString iconName();
  QString menuPath();
  QVariantList ask(const QString& path, const QString& interface, const QString& method, const QVariantList& arguments);

  PrivateBus& bus_;
  std::function<bool(const std::function<bool()>&)> waitFor_;
  QDBusConnection connection_;
  std::unique_ptr<desktop::ChildProcess> watcher_;
};

}  // namespace veloria::tests
