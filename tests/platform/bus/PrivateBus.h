#pragma once

#include <QDBusConnection>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <memory>
#include <string>
#include <vector>

#include "Process.h"

namespace veloria::tests {

/// A message bus of its own with mocked services, each a program of its own. Throws std::runtime_error when something
/// does not start. Services that it may start itself are described in dbus-1/services of the folder.
class PrivateBus {
 public:
  /// A sentence that names what is missing for it; empty when nothing is.
  static std::string missing();

  explicit PrivateBus(const TemporaryFolder& folder, const std::string& name);
  ~PrivateBus();
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  const std::string& address() const { return address_; }
  /// Starts the bus; done in the constructor once.
  void start();
  /// Ends the bus and, with it, the services.
  void stop();

  /// A service from one of the mock's templates, or one with `arguments` "NAME PATH INTERFACE", until it is let go.
  [[nodiscard]] std::unique_ptr<desktop::ChildProcess> serve(const QString& service,
                                                             const std::vector<std::string>& arguments);

  /// What a method replies; throws when it fails.
  QVariantList call(const QString& service, const QString& path, const QString& interface, const QString& method,
                    const QVariantList& arguments = {});
  /// The same on the mock's own interface.
  QVariantList mock(const QString& service, const QString& path, const QString& method, const QVariantList& arguments);
  /// How often a method of the service's main object was called.
  int calls(const QString& service, const QString& path, const QString& method);

 private:
  std::string folder_;
  std::string name_;
  std::string address_;
  QString connectionName_;
  int programs_ = 0;
  std::unique_ptr<desktop::ChildProcess> daemon_;
};

}  // namespace veloria::tests
