#pragma once

#include <QApplication>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QWidget>

#include "PrivateBus.h"
#include "desktop/DesktopSession.h"
#include "platform/linux/tray/TrayIcon.h"

namespace veloria::tests {

/// A line of a menu as a panel gets it, or the whole menu. The id is 0 if there is no such line.
struct MenuLine {
  int id = 0;
  QVariantMap properties;
  std::vector<MenuLine> children;

  explicit MenuLine(const QDBusArgument& argument = {}) {
    if (argument.currentType() != QDBusArgument::StructureType) return;
    QVariantList lines;
    argument.beginStructure();
    argument >> id >> properties >> lines;
    argument.endStructure();
    for (const QVariant& each : lines) children.emplace_back(qvariant_cast<QDBusArgument>(each));
  }

  QString label() const { return properties.value("label").toString(); }
  MenuLine find(const QString& wanted) const {
    for (const MenuLine& line : children) {
      if (line.label() == wanted) return line;
      if (const MenuLine inner = line.find(wanted); inner.id != 0) return inner;
    }
    return MenuLine();
  }

  /// A line each, with "---" for separators, a mark and "disabled", and submenus in parentheses.
  std::string text() const {
    std::string result;
    for (const MenuLine& line : children) {
      const bool separator = line.properties.value("type").toString() == "separator";
      result += separator ? "---" : line.label().toStdString();
      const int state = line.properties.value("toggle-state", -1).toInt();
      if (state >= 0) result += state == 1 ? " [x]" : " [ ]";
      if (!separator && !line.properties.value("enabled", true).toBool()) result += " disabled";
      if (!line.children.empty()) result += " (" + line.text() + ")";
      result += ';';
    }
    return result;
  }
};

const QString hostConnection = "status-host";
const QString watcherName = "org.kde.StatusNotifierWatcher";
const QString watcherPath = "/StatusNotifierWatcher";

/// The status icon of a real application on a desktop and a session bus of their own, and a panel that hosts status
/// notifiers: its watcher is a program of its own, and it queries the icon over a connection of its own.
class TrayTest : public BusTest {
 protected:
  static void SetUpTestSuite() {
    missing_ = DesktopSession::missing({"xdotool", "openbox", "tint2"});
    startBus();
    if (!missing_.empty()) return;
    x11_ = std::make_unique<DesktopSession>();
    x11_->setIdle([] { QApplication::processEvents(QEventLoop::AllEvents); });
    for (const auto& [name, value] : x11_->environment()) qputenv(name.c_str(), QByteArray::fromStdString(value));
    qputenv("QT_QPA_PLATFORM", "xcb");
    static int argc = 1;
    static char name[] = "veloria";
    static char* argv[] = {name, nullptr};
    QApplication::setQuitOnLastWindowClosed(false);
    application_ = std::make_unique<QApplication>(argc, argv);
  }

  static void TearDownTestSuite() {
    QDBusConnection::disconnectFromBus(hostConnection);
    application_.reset();
    x11_.reset();
    BusTest::TearDownTestSuite();
  }

  void SetUp() override {
    BusTest::SetUp();
    if (!IsSkipped() && !missing_.empty()) GTEST_SKIP() << missing_;
  }

  void TearDown() override {
    if (!IsSkipped()) closeMenu();
    icon_.reset();
    BusTest::TearDown();
  }

  /// Like the application, it shows the menu after a secondary click or one with the control key.
  void startIcon() {
    icon_ = std::make_unique<TrayIcon>([this](std::string_view text) { log_.emplace_back(text); });
    const auto clicked = [this](Click click, bool control) {
      clicks_ += click == Click::secondary ? 's' : control ? 'P' : 'p';
      if (control || click == Click::secondary) icon_->showMenu();
    };
    icon_->setHandlers({.clicked = clicked, .chosen = [this](const MenuItem& item) { chosen_ += item.title; }});
    icon_->setMenu(model_);
  }

  static bool menuIsOpen() { return QApplication::activePopupWidget() != nullptr; }
  static void closeMenu() {
    while (QWidget* popup = QApplication::activePopupWidget()) popup->close();
  }
  static DesktopSession& desktop() { return *x11_; }

  void startWatcher() {
    services_.clear();
    serve(watcherName, {"-t", VELORIA_TEST_DATA "/watcher.py"});
  }
  static std::vector<QVariantList> registrations() {
    return bus().calls(watcherName, watcherPath, "RegisterStatusNotifierItem");
  }
  static bool hasIcon() {
    return waitFor([] { return !registrations().empty(); });
  }

  // Of the icon that registered first.
  QVariant property(const QString& name) {
    const auto reply =
        ask("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get", {"org.kde.StatusNotifierItem", name});
    return qvariant_cast<QDBusVariant>(reply.value(0)).variant();
  }
  /// The mean green, 0 to 255, of the opaque pixels of the first picture: four bytes each, alpha first.
  int brightness() {
    const auto argument = qvariant_cast<QDBusArgument>(property("IconPixmap"));
    int width = 0, height = 0, sum = 0, count = 0;
    QByteArray pixels;
    argument.beginArray();
    argument.beginStructure();
    argument >> width >> height >> pixels;
    argument.endStructure();
    argument.endArray();
    for (qsizetype i = 0; i + 3 < pixels.size(); i += 4) {
      if (static_cast<uchar>(pixels[i]) < 250) continue;
      sum += static_cast<uchar>(pixels[i + 2]);
      ++count;
    }
    return sum / std::max(count, 1);
  }
  MenuLine menu() {
    const auto reply = askMenu("GetLayout", {0, -1, QStringList()});
    return MenuLine(qvariant_cast<QDBusArgument>(reply.value(1)));
  }
  /// Clicks a line of the menu, which may take effect later. False if there is no such line.
  bool choose(const QString& label) {
    const int id = menu().find(label).id;
    if (id != 0) askMenu("Event", {id, "clicked", QVariant::fromValue(QDBusVariant(0)), QVariant::fromValue(0U)});
    return id != 0;
  }
  void click(const QString& method) { ask("/StatusNotifierItem", "org.kde.StatusNotifierItem", method, {100, 10}); }

  Menu model_;
  std::vector<std::string> log_;
  std::string clicks_;  ///< a letter each: primary (in upper case with the control key), secondary
  std::string chosen_;  ///< titles
  std::unique_ptr<TrayIcon> icon_;

 private:
  QVariantList askMenu(const QString& method, const QVariantList& arguments) {
    return ask(qvariant_cast<QDBusObjectPath>(property("Menu")).path(), "com.canonical.dbusmenu", method, arguments);
  }

  QVariantList ask(const QString& path, const QString& interface, const QString& method,
                   const QVariantList& arguments) {
    const QString icon = registrations().at(0).value(0).toString();
    auto message = QDBusMessage::createMethodCall(icon, path, interface, method);
    message.setArguments(arguments);
    const auto call =
        QDBusConnection::connectToBus(QString::fromStdString(bus().address()), hostConnection).asyncCall(message);
    EXPECT_TRUE(waitFor([&] { return call.isFinished(); }) && !call.isError()) << method.toStdString();
    return call.reply().arguments();
  }

  inline static std::string missing_;
  inline static std::unique_ptr<DesktopSession> x11_;
  inline static std::unique_ptr<QApplication> application_;
};

}  // namespace veloria::tests
