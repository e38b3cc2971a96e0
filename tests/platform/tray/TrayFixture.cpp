#include "TrayFixture.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QWidget>

namespace veloria::tests {

const QString TrayTest::watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");

namespace {

const QString hostConnection = QStringLiteral("status-host");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString iconPath = QStringLiteral("/StatusNotifierItem");
const QString iconInterface = QStringLiteral("org.kde.StatusNotifierItem");

MenuLine readLine(const QDBusArgument& argument) {
  MenuLine line;
  QVariantList children;
  argument.beginStructure();
  argument >> line.id >> line.properties >> children;
  argument.endStructure();
  for (const QVariant& child : children) line.children.push_back(readLine(qvariant_cast<QDBusArgument>(child)));
  return line;
}

}  // namespace

MenuLine MenuLine::find(const QString& label) const {
  for (const MenuLine& line : children) {
    if (line.label() == label) return line;
    if (const MenuLine inner = line.find(label); inner.id != 0) return inner;
  }
  return {};
}

QString MenuLine::text() const {
  QString result;
  for (const MenuLine& line : children) {
    const bool separator = line.properties.value("type").toString() == "separator";
    result += separator ? "---" : line.label();
    const QVariant state = line.properties.value("toggle-state", -1);
    if (state.toInt() >= 0) result += state.toInt() == 1 ? " [x]" : " [ ]";
    if (const QVariant shortcut = line.properties.value("shortcut"); shortcut.isValid()) {
      QList<QStringList> keys;
      qvariant_cast<QDBusArgument>(shortcut) >> keys;
      result += " " + keys.value(0).join('+');
    }
    if (!separator && !line.properties.value("enabled", true).toBool()) result += " disabled";
    if (!line.children.empty()) result += " (" + line.text().replace('\n', ';') + ")";
    result += '\n';
  }
  return result;
}

int IconPicture::brightness() const {
  int sum = 0;
  int count = 0;
  for (qsizetype i = 0; i + 3 < pixels.size(); i += 4) {
    if (static_cast<uchar>(pixels[i]) < 250) continue;
    sum += static_cast<uchar>(pixels[i + 2]);
    ++count;
  }
  return count > 0 ? sum / count : -1;
}

void TrayTest::startOnX11() {
  missing_ = desktop::DesktopSession::missing({"xdotool", "openbox", "tint2"});
  startBus();
  if (!missing_.empty()) return;
  x11_ = std::make_unique<desktop::DesktopSession>();
  x11_->setIdle([] { QApplication::processEvents(QEventLoop::AllEvents); });
  startApplication("xcb", x11_->environment());
}

void TrayTest::startOnWayland() {
  missing_ = desktop::SwaySession::missing();
  startBus();
  if (!missing_.empty()) return;
  wayland_ = std::make_unique<desktop::SwaySession>(desktop::SwaySession::Options{});
  startApplication("wayland", wayland_->environment());
}

void TrayTest::startApplication(const char* platform, const std::map<std::string, std::string>& environment) {
  for (const auto& [name, value] : environment) qputenv(name.c_str(), QByteArray::fromStdString(value));
  qputenv("QT_QPA_PLATFORM", platform);
  static int argc = 1;
  static char name[] = "veloria";
  static char* argv[] = {name, nullptr};
  QApplication::setQuitOnLastWindowClosed(false);
  application_ = std::make_unique<QApplication>(argc, argv);
}

void TrayTest::TearDownTestSuite() {
  QDBusConnection::disconnectFromBus(hostConnection);
  application_.reset();
  x11_.reset();
  wayland_.reset();
  BusTest::TearDownTestSuite();
}

void TrayTest::SetUp() {
  BusTest::SetUp();
  if (!IsSkipped() && !missing_.empty()) GTEST_SKIP() << missing_;
}

void TrayTest::TearDown() {
  if (!IsSkipped()) closeMenu();
  icon_.reset();
  BusTest::TearDown();
}

void TrayTest::startIcon() {
  icon_ = std::make_unique<TrayIcon>([this](std::string_view text) { log_.emplace_back(text); });
  icon_->setHandlers({.clicked =
                          [this](Click click, bool control) {
                            clicks_ += click == Click::secondary ? (control ? 'S' : 's') : (control ? 'P' : 'p');
                            if (control || click == Click::secondary) icon_->showMenu();
                          },
                      .chosen = [this](const MenuItem& item) { chosen_ += item.title; }});
  icon_->setMenu(model_);
}

void TrayTest::closeMenu() {
  while (QWidget* popup = QApplication::activePopupWidget()) popup->close();
}

void TrayTest::startWatcher(bool withHost) {
  services_.clear();
  const char* parameters = withHost ? R"({"host": true})" : R"({"host": false})";
  serve(watcherName, {"-t", VELORIA_TEST_DATA "/watcher.py", "-p", parameters});
}

void TrayTest::announceHost() {
  bus().setProperty(watcherName, watcherPath, watcherName, "IsStatusNotifierHostRegistered", true);
  bus().sendSignal(watcherName, watcherPath, watcherName, "StatusNotifierHostRegistered", "", {});
}

std::size_t TrayTest::registrations() {
  return bus().calls(watcherName, watcherPath, "RegisterStatusNotifierItem").size();
}

QVariantList TrayTest::ask(const QString& path, const QString& interface, const QString& method,
                           const QVariantList& arguments) {
  const auto icons = bus().calls(watcherName, watcherPath, "RegisterStatusNotifierItem");
  auto message = QDBusMessage::createMethodCall(icons.at(0).value(0).toString(), path, interface, method);
  message.setArguments(arguments);
  const QDBusPendingCall call =
      QDBusConnection::connectToBus(QString::fromStdString(bus().address()), hostConnection).asyncCall(message);
  EXPECT_TRUE(waitFor([&] { return call.isFinished(); })) << method.toStdString();
  EXPECT_FALSE(call.isError()) << method.toStdString() << ": " << call.error().message().toStdString();
  return call.reply().arguments();
}

QVariant TrayTest::property(const QString& name) {
  const auto reply = ask(iconPath, "org.freedesktop.DBus.Properties", "Get", {iconInterface, name});
  return qvariant_cast<QDBusVariant>(reply.value(0)).variant();
}

std::vector<IconPicture> TrayTest::pictures() {
  const auto argument = qvariant_cast<QDBusArgument>(property("IconPixmap"));
  std::vector<IconPicture> pictures;
  for (argument.beginArray(); !argument.atEnd();) {
    IconPicture& picture = pictures.emplace_back();
    argument.beginStructure();
    argument >> picture.width >> picture.height >> picture.pixels;
    argument.endStructure();
  }
  argument.endArray();
  return pictures;
}

MenuLine TrayTest::menu() {
  const QString path = qvariant_cast<QDBusObjectPath>(property("Menu")).path();
  const QVariantList reply = ask(path, "com.canonical.dbusmenu", "GetLayout", {0, -1, QStringList()});
  return readLine(qvariant_cast<QDBusArgument>(reply.value(1)));
}

bool TrayTest::choose(const QString& label) {
  const MenuLine line = menu().find(label);
  if (line.id == 0) return false;
  ask(qvariant_cast<QDBusObjectPath>(property("Menu")).path(), "com.canonical.dbusmenu", "Event",
      {line.id, "clicked", QVariant::fromValue(QDBusVariant(0)), QVariant::fromValue(0U)});
  return true;
}

void TrayTest::click(const QString& method) {
  ask(iconPath, iconInterface, method, {100, 10});
}

}  // namespace veloria::tests
