#pragma once

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QString>
#include <QVariantList>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Process.h"
#include "base/Environment.h"
#include "desktop/ChildProcess.h"

namespace veloria::tests {

/// A message bus of its own with mocked services, each a program of its own. Throws std::runtime_error if one does not
/// start. Services that the bus may start itself are described in dbus-1/services of the folder.
class PrivateBus {
 public:
  /// A sentence that names what is missing for it; empty if nothing is.
  static std::string missing();

  PrivateBus();
  ~PrivateBus();
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  const TemporaryFolder& folder() const { return folder_; }
  const std::string& address() const { return address_; }
  /// Starts the bus; the constructor does so once.
  void start();
  /// Ends the bus and, with it, the services.
  void stop();

  /// A service from one of the mock's templates, or one with `arguments` "NAME PATH INTERFACE".
  [[nodiscard]] std::unique_ptr<desktop::ChildProcess> serve(const QString& service,
                                                             const std::vector<std::string>& arguments);

  /// The reply of a method; throws if it fails.
  QVariantList call(const QString& service, const QString& path, const QString& interface, const QString& method,
                    const QVariantList& arguments = {});
  /// The same on the mock's own interface.
  QVariantList mock(const QString& service, const QString& path, const QString& method, const QVariantList& arguments);
  void sendSignal(const QString& service, const QString& path, const QString& interface, const QString& name,
                  const QString& signature, const QVariantList& arguments);
  void setProperty(const QString& service, const QString& path, const QString& interface, const QString& name,
                   const QVariant& value);
  /// The arguments of each call of a method of the service's main object.
  std::vector<QVariantList> calls(const QString& service, const QString& path, const QString& method);

 private:
  TemporaryFolder folder_;
  std::string address_ = "unix:path=" + folder_.file("bus");
  QString connectionName_;
  int programs_ = 0;
  std::unique_ptr<desktop::ChildProcess> daemon_;
};

/// Tests with a bus that lasts for the suite, services that last for a test, and an event loop. The bus is the session
/// bus of this process.
class BusTest : public testing::Test {
 protected:
  static void startBus();
  /// With a QCoreApplication.
  static void SetUpTestSuite();
  static void TearDownTestSuite() { bus_.reset(); }
  void SetUp() override;
  void TearDown() override { services_.clear(); }

  static PrivateBus& bus() { return *bus_; }
  void serve(const QString& service, const std::vector<std::string>& arguments) {
    services_[service] = bus_->serve(service, arguments);
  }
  /// Runs the event loop until the condition holds.
  static bool waitFor(const std::function<bool()>& condition, double seconds = 20);
  /// Runs the event loop for a while in which nothing may happen.
  static void runFor(double seconds) {
    waitFor([] { return false; }, seconds);
  }
  /// Answers from `variables_`.
  Environment environment() const;

  std::map<std::string, std::string, std::less<>> variables_;
  std::map<QString, std::unique_ptr<desktop::ChildProcess>> services_;

 private:
  inline static std::unique_ptr<PrivateBus> bus_;
};

}  // namespace veloria::tests
