#include "PrivateBus.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QUuid>
#include <stdexcept>

namespace veloria::tests {

namespace {

constexpr double bound = 20;
// The system's own: that is where distributions put the mock.
constexpr const char* python = "/usr/bin/python3";

}  // namespace

std::string PrivateBus::missing() {
  if (const auto program = desktop::missingProgram({"dbus-daemon", python}); !program.empty()) {
    return program + " is not installed (script/bootstrap installs it)";
  }
  const bool mocks = runProcess(python, {"-c", "import dbusmock, gi"}).exitCode == 0;
  return mocks ? "" : "python3-dbusmock is not installed (script/bootstrap installs it)";
}

PrivateBus::PrivateBus() {
  start();
}

PrivateBus::~PrivateBus() {
  stop();
}

void PrivateBus::start() {
  daemon_ = std::make_unique<desktop::ChildProcess>(
      std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + address_},
      std::map<std::string, std::string>{{"XDG_DATA_HOME", folder_.path()}},
      folder_.file(std::to_string(++programs_) + ".log"));
  connectionName_ = QUuid::createUuid().toString();
  const bool up = desktop::poll(bound, [&] {
    if (QDBusConnection::connectToBus(QString::fromStdString(address_), connectionName_).isConnected()) return true;
    QDBusConnection::disconnectFromBus(connectionName_);
    return false;
  });
  if (!up) throw std::runtime_error("the bus does not start: " + daemon_->output());
}

void PrivateBus::stop() {
  QDBusConnection::disconnectFromBus(connectionName_);
  daemon_.reset();
}

std::unique_ptr<desktop::ChildProcess> PrivateBus::serve(const QString& service,
                                                         const std::vector<std::string>& arguments) {
  std::vector<std::string> command{python, "-m", "dbusmock", "--session"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  auto program = std::make_unique<desktop::ChildProcess>(
      command, std::map<std::string, std::string>{{"DBUS_SESSION_BUS_ADDRESS", address_}},
      folder_.file(std::to_string(++programs_) + ".log"));
  auto* names = QDBusConnection(connectionName_).interface();
  if (!desktop::poll(bound, [&] { return names->isServiceRegistered(service).value(); })) {
    throw std::runtime_error(service.toStdString() + " does not start: " + program->output());
  }
  return program;
}

QVariantList PrivateBus::call(const QString& service, const QString& path, const QString& interface,
                              const QString& method, const QVariantList& arguments) {
  auto message = QDBusMessage::createMethodCall(service, path, interface, method);
  message.setArguments(arguments);
  const QDBusMessage reply = QDBusConnection(connectionName_).call(message);
  if (reply.type() != QDBusMessage::ReplyMessage) {
    throw std::runtime_error(method.toStdString() + ": " + reply.errorMessage().toStdString());
  }
  return reply.arguments();
}

QVariantList PrivateBus::mock(const QString& service, const QString& path, const QString& method,
                              const QVariantList& arguments) {
  return call(service, path, QStringLiteral("org.freedesktop.DBus.Mock"), method, arguments);
}

void PrivateBus::sendSignal(const QString& service, const QString& path, const QString& interface, const QString& name,
                            const QString& signature, const QVariantList& arguments) {
  mock(service, path, "EmitSignal", {interface, name, signature, QVariant(arguments)});
}

void PrivateBus::setProperty(const QString& service, const QString& path, const QString& interface, const QString& name,
                             const QVariant& value) {
  mock(service, path, "UpdateProperties", {interface, QVariantMap{{name, value}}});
}

std::vector<QVariantList> PrivateBus::calls(const QString& service, const QString& path, const QString& method) {
  const auto reply = mock(service, path, "GetMethodCalls", {method});
  const auto calls = qvariant_cast<QDBusArgument>(reply.constFirst());
  std::vector<QVariantList> result;
  for (calls.beginArray(); !calls.atEnd();) {
    qulonglong time = 0;
    calls.beginStructure();
    calls >> time >> result.emplace_back();
    calls.endStructure();
  }
  calls.endArray();
  return result;
}

void BusTest::startBus() {
  if (!PrivateBus::missing().empty()) return;
  bus_ = std::make_unique<PrivateBus>();
  qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(bus_->address()));
}

void BusTest::SetUpTestSuite() {
  startBus();
  static int argc = 1;
  static char name[] = "veloria";
  static char* argv[] = {name, nullptr};
  static QCoreApplication application(argc, argv);
}

void BusTest::SetUp() {
  if (!bus_) GTEST_SKIP() << PrivateBus::missing();
}

bool BusTest::waitFor(const std::function<bool()>& condition, double seconds) {
  return desktop::poll(seconds, [&] {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    return condition();
  });
}

Environment BusTest::environment() const {
  return [this](std::string_view name) -> std::optional<std::string> {
    const auto found = variables_.find(name);
    return found == variables_.end() ? std::nullopt : std::optional(found->second);
  };
}

}  // namespace veloria::tests
