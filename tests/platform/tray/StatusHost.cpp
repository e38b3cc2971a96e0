#include "StatusHost.h"

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <utility>

namespace veloria::tests {

namespace {

const QString connectionName = QStringLiteral("status-host");
const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString iconPath = QStringLiteral("/StatusNotifierItem");
const QString iconInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");

std::vector<IconPicture> readPictures(const QDBusArgument& argument) {
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

std::vector<QString> MenuLine::labels() const {
  std::vector<QString> result;
  for (const MenuLine& line : children) result.push_back(line.separator() ? "---" : line.label());
  return result;
}

std::vector<QString> MenuLine::checkedLabels() const {
  std::vector<QString> result;
  for (const MenuLine& line : children) {
    if (line.checked()) result.push_back(line.label());
  }
  return result;
}

MenuLine MenuLine::find(const QString& label) const {
  for (const MenuLine& line : children) {
    if (line.label() == label) return line;
    if (const MenuLine inner = line.find(label); inner.id != 0) return inner;
  }
  return {};
}

QStringList MenuLine::shortcut() const {
  QList<QStringList> keys;
  const QVariant value = properties.value("shortcut");
  if (value.isValid()) qvariant_cast<QDBusArgument>(value) >> keys;
  return keys.value(0);
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

StatusHost::StatusHost(PrivateBus& bus, std::function<bool(const std::function<bool()>&)> waitFor)
    : bus_(bus),
      waitFor_(std::move(waitFor)),
      connection_(QDBusConnection::connectToBus(QString::fromStdString(bus.address()), connectionName)) {}

StatusHost::~StatusHost() {
  QDBusConnection::disconnectFromBus(connectionName);
}

void StatusHost::startWatcher(bool withHost) {
  watcher_.reset();
  const char* parameters = withHost ? R"({"host": true})" : R"({"host": false})";
  watcher_ = bus_.serve(watcherName, {"-t", VELORIA_TEST_DATA "/watcher.py", "-p", parameters});
}

void StatusHost::announceHost() {
  bus_.mock(watcherName, watcherPath, "UpdateProperties",
            {watcherName, QVariantMap{{"IsStatusNotifierHostRegistered", true}}});
  bus_.mock(watcherName, watcherPath, "EmitSignal",
            {watcherName, "StatusNotifierHostRegistered", "", QVariant(QVariantList())});
}

int StatusHost::registrations() {
  return bus_.calls(watcherName, watcherPath, "RegisterStatusNotifierItem");
}

QString StatusHost::iconName() {
  const auto reply = bus_.mock(watcherName, watcherPath, "GetMethodCalls", {"RegisterStatusNotifierItem"});
  const auto calls = qvariant_cast<QDBusArgument>(reply.constFirst());
  QString name;
  for (calls.beginArray(); !calls.atEnd();) {
    qulonglong time = 0;
    QVariantList arguments;
    calls.beginStructure();
    calls >> time >> arguments;
    calls.endStructure();
    if (name.isEmpty()) name = arguments.value(0).toString();
  }
  calls.endArray();
  return name;
}

QVariantList StatusHost::ask(const QString& path, const QString& interface, const QString& method,
                             const QVariantList& arguments) {
  auto message = QDBusMessage::createMethodCall(iconName(), path, interface, method);
  message.setArguments(arguments);
  const QDBusPendingCall call = connection_.asyncCall(message);
  EXPECT_TRUE(waitFor_([&] { return call.isFinished(); })) << method.toStdString();
  EXPECT_FALSE(call.isError()) << method.toStdString() << ": " << call.error().message().toStdString();
  return call.reply().arguments();
}

QVariant StatusHost::property(const QString& name) {
  const auto reply = ask(iconPath, "org.freedesktop.DBus.Properties", "Get", {iconInterface, name});
  return qvariant_cast<QDBusVariant>(reply.value(0)).variant();
}

std::vector<IconPicture> StatusHost::pictures() {
  return readPictures(qvariant_cast<QDBusArgument>(property("IconPixmap")));
}

QString StatusHost::toolTip() {
  const auto argument = qvariant_cast<QDBusArgument>(property("ToolTip"));
  QString iconName;
  QString title;
  argument.beginStructure();
  argument >> iconName;
  readPictures(argument);
  argument >> title;
  argument.endStructure();
  return title;
}

QString StatusHost::menuPath() {
  return qvariant_cast<QDBusObjectPath>(property("Menu")).path();
}

MenuLine StatusHost::menu() {
  const QVariantList reply = ask(menuPath(), menuInterface, "GetLayout", {0, -1, QStringList()});
  return readLine(qvariant_cast<QDBusArgument>(reply.value(1)));
}

bool StatusHost::choose(const QString& label) {
  const MenuLine line = menu().find(label);
  if (line.id == 0) return false;
  ask(menuPath(), menuInterface, "Event",
      {line.id, "clicked", QVariant::fromValue(QDBusVariant(0)), QVariant::fromValue(0U)});
  return true;
}

void StatusHost::click(const QString& method) {
  ask(iconPath, iconInterface, method, {100, 10});
}

}  // namespace veloria::tests
