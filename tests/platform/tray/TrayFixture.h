#pragma once

#include <QApplication>
#include <QByteArray>
#include <QDBusConnection>
#include <QStringList>
#include <QVariant>

#include "PrivateBus.h"
#include "desktop/DesktopSession.h"
#include "desktop/SwaySession.h"
#include "platform/linux/tray/TrayIcon.h"

namespace veloria::tests {

/// A line of a menu as a panel gets it; the menu itself is a line too.
struct MenuLine {
  int id = 0;  ///< 0: there is no such line
  QVariantMap properties;
  std::vector<MenuLine> children;

  QString label() const { return properties.value("label").toString(); }
  /// The first line of that label, at any depth.
  MenuLine find(const QString& label) const;
  /// A line each, with "---" for separators, a mark, the shortcut and "disabled", and submenus in parentheses.
  QString text() const;
};

/// One picture of an icon: rows of pixels of four bytes, alpha first.
struct IconPicture {
  int width = 0;
  int height = 0;
  QByteArray pixels;

  /// The mean brightness, 0 to 255, of the opaque pixels; -1 if there are none.
  int brightness() const;
};

/// The status icon of a real application on a desktop and a session bus of their own, and a panel that hosts status
/// notifiers: its watcher is a program of its own, and it queries the icon over a connection of its own. The
/// application lives as long as the test program, because the library keeps what it finds out about the desktop. Each
/// suite starts one of the desktops.
class TrayTest : public BusTest {
 protected:
  static void startOnX11();
  static void startOnWayland();
  static void TearDownTestSuite();
  void SetUp() override;
  void TearDown() override;

  /// Like the application, it shows the menu after a secondary click or one with the control key.
  void startIcon();
  static bool menuIsOpen() { return QApplication::activePopupWidget() != nullptr; }
  static void closeMenu();
  static desktop::DesktopSession& desktop() { return *x11_; }

  void startWatcher(bool withHost = true);
  /// A host comes to a watcher that had none.
  static void announceHost();
  static std::size_t registrations();
  static bool hasIcon() {
    return waitFor([] { return registrations() > 0; });
  }

  // Of the icon that registered first.
  QVariant property(const QString& name);
  std::vector<IconPicture> pictures();
  MenuLine menu();
  /// Clicks a line of the menu, which may take effect later. False if there is no such line.
  bool choose(const QString& label);
  /// "Activate", "SecondaryActivate" or "ContextMenu".
  void click(const QString& method);

  static const QString watcherName;
  Menu model_;
  std::vector<std::string> log_;
  std::string clicks_;  ///< a letter each: primary, secondary; in upper case with the control key
  std::string chosen_;  ///< titles
  std::unique_ptr<TrayIcon> icon_;

 private:
  static void startApplication(const char* platform, const std::map<std::string, std::string>& environment);
  QVariantList ask(const QString& path, const QString& interface, const QString& method, const QVariantList& arguments);

  inline static std::string missing_;
  inline static std::unique_ptr<desktop::DesktopSession> x11_;
  inline static std::unique_ptr<desktop::SwaySession> wayland_;
  inline static std::unique_ptr<QApplication> application_;
};

}  // namespace veloria::tests
