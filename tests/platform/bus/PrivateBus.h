#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QString>
#include <QUuid>
#include <QVariantList>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>

#include "Process.h"
#include "base/Environment.h"

namespace veloria::tests {

using Variables = std::map<std::string_view, std::string>;

/// Only these variables.
inline Environment environmentOf(const Variables& variables) {
  return [variables](std::string_view name) {
    return variables.contains(name) ? std::optional(variables.at(name)) : std::nullopt;
  };
}

/// A message bus of its own with mocked services, each a program of its own. Throws std::runtime_error if one does not
/// start.
class PrivateBus {
 public:
  /// A sentence that names what is missing for it; empty if nothing is.
  static std::string missing() {
    const bool found = runProcess("/usr/bin/env", {"dbus-daemon", "--version"}).exitCode == 0 &&
                       runProcess(python, {"-c", "import dbusmock, gi"}).exitCode == 0;
    return found ? "" : "dbus-daemon or python3-dbusmock is not installed (script/bootstrap installs them)";
  }

  PrivateBus() { start(); }
  ~PrivateBus() { stop(); }

  const std::string& address() const { return address_; }

  void start() {
    daemon_ = run({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + address_});
    connectionName_ = QUuid::createUuid().toString();
    const bool up = poll(bound, [&] {
      QDBusConnection::disconnectFromBus(connectionName_);
      return QDBusConnection::connectToBus(QString::fromStdString(address_), connectionName_).isConnected();
    });
    if (!up) throw std::runtime_error("the bus does not start: " + daemon_->output());
  }

  /// Ends the bus and, with it, the services.
  void stop() {
    QDBusConnection::disconnectFromBus(connectionName_);
    daemon_.reset();
  }

  /// A service from one of the mock's templates, or one with `arguments` "NAME PATH INTERFACE".
  [[nodiscard]] std::unique_ptr<ChildProcess> serve(const QString& service, const std::vector<std::string>& arguments) {
    std::vector<std::string> command{python, "-m", "dbusmock", "--session"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    auto program = run(command);
    auto* names = QDBusConnection(connectionName_).interface();
    if (!poll(bound, [&] { return names->isServiceRegistered(service).value(); })) {
      throw std::runtime_error(service.toStdString() + " does not start: " + program->output());
    }
    return program;
  }

  /// The reply of a method of the mock's own interface; throws if it fails.
  QVariantList mock(const QString& service, const QString& path, const QString& method, const QVariantList& arguments) {
    auto message = QDBusMessage::createMethodCall(service, path, "org.freedesktop.DBus.Mock", method);
    message.setArguments(arguments);
    const QDBusMessage reply = QDBusConnection(connectionName_).call(message);
    if (reply.type() == QDBusMessage::ReplyMessage) return reply.arguments();
    throw std::runtime_error(method.toStdString() + ": " + reply.errorMessage().toStdString());
  }
  void sendSignal(const QString& service, const QString& path, const QString& interface, const QString& name,
                  const QString& signature, const QVariantList& arguments) {
    mock(service, path, "EmitSignal", {interface, name, signature, QVariant(arguments)});
  }
  void setProperty(const QString& service, const QString& path, const QString& interface, const QString& name,
                   const QVariant& value) {
    mock(service, path, "UpdateProperties", {interface, QVariantMap{{name, value}}});
  }
  /// The arguments of each call of a method of the service's main object.
  std::vector<QVariantList> calls(const QString& service, const QString& path, const QString& method) {
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

 private:
  static constexpr double bound = 20;
  // The system's own: that is where distributions put the mock.
  static constexpr const char* python = "/usr/bin/python3";

  std::unique_ptr<ChildProcess> run(const std::vector<std::string>& command) {
    return std::make_unique<ChildProcess>(command,
                                          std::map<std::string, std::string>{{"DBUS_SESSION_BUS_ADDRESS", address_}},
                                          folder_.file(std::to_string(++programs_) + ".log"));
  }

  TemporaryFolder folder_;
  std::string address_ = "unix:path=" + folder_.file("bus");
  QString connectionName_;
  int programs_ = 0;
  std::unique_ptr<ChildProcess> daemon_;
};

/// Tests with a bus that lasts for the suite, services that last for a test, and an event loop. The bus is the session
/// bus of this process.
class BusTest : public testing::Test {
 protected:
  static void startBus() {
    if (!PrivateBus::missing().empty()) return;
    bus_ = std::make_unique<PrivateBus>();
    qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(bus_->address()));
  }
  /// With a QCoreApplication.
  static void SetUpTestSuite() {
    startBus();
    static int argc = 1;
    static char name[] = "veloria";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
  }
  static void TearDownTestSuite() { bus_.reset(); }
  void SetUp() override {
    if (!bus_) GTEST_SKIP() << PrivateBus::missing();
  }
  void TearDown() override { services_.clear(); }

  static PrivateBus& bus() { return *bus_; }
  void serve(const QString& service, const std::vector<std::string>& arguments) {
    services_[service] = bus_->serve(service, arguments);
  }
  /// Runs the event loop until the condition holds.
  static bool waitFor(const std::function<bool()>& condition, double seconds = 20) {
    return poll(seconds, [&] {
      QCoreApplication::processEvents(QEventLoop::AllEvents);
      return condition();
    });
  }
  /// Runs the event loop for a while in which nothing may happen.
  static void runFor(double seconds) {
    waitFor([] { return false; }, seconds);
  }
  Environment environment() const { return environmentOf(variables_); }

  Variables variables_;
  std::map<QString, std::unique_ptr<ChildProcess>> services_;

 private:
  inline static std::unique_ptr<PrivateBus> bus_;
};

}  // namespace veloria::tests
