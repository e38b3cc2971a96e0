#include "PrivateBus.h"

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

PrivateBus::PrivateBus(const TemporaryFolder& folder, const std::string& name)
    : folder_(folder.path()), name_(name), address_("unix:path=" + folder.file(name)) {
  start();
}

PrivateBus::~PrivateBus() {
  stop();
}

void PrivateBus::start() {
  const std::string log = folder_ + "/" + name_ + std::to_string(++programs_) + ".log";
  daemon_ = std::make_unique<desktop::ChildProcess>(
      std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + address_},
      std::map<std::string, std::string>{{"XDG_DATA_HOME", folder_}}, log);
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
  const std::string log = folder_ + "/" + name_ + std::to_string(++programs_) + ".log";
  auto program = std::make_unique<desktop::ChildProcess>(
      command, std::map<std::string, std::string>{{"DBUS_SESSION_BUS_ADDRESS", address_}}, log);
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

int PrivateBus::calls(const QString& service, const QString& path, const QString& method) {
  const auto reply = mock(service, path, QStringLiteral("GetMethodCalls"), {method});
  const auto calls = qvariant_cast<QDBusArgument>(reply.constFirst());
  int count = 0;
  for (calls.beginArray(); !calls.atEnd(); ++count) {
    qulonglong time = 0;
    QVariantList arguments;
    calls.beginStructure();
    calls >> time >> arguments;
    calls.endStructure();
  }
  calls.endArray();
  return count;
}

}  // namespace veloria::tests
