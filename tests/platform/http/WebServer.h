#pragma once

#include <string>

#include "Process.h"
#include "desktop/ChildProcess.h"

namespace veloria::tests {

/// A certificate and its key in two files.
struct Certificate {
  std::string file;
  std::string keyFile;
};

/// Makes a self-signed certificate for `hosts` ("DNS:localhost,IP:127.0.0.1") with the openssl program. Throws
/// std::runtime_error if that fails.
Certificate makeCertificate(const TemporaryFolder& folder, const std::string& name, const std::string& hosts);

/// The web server of server.py, which describes what its addresses answer. Ends with this object.
class WebServer {
 public:
  /// Throws std::runtime_error if it does not start.
  explicit WebServer(const Certificate* certificate = nullptr);

  /// The address of `path` on 127.0.0.1.
  std::string url(const std::string& path) const;
  int port() const { return port_; }

 private:
  TemporaryFolder folder_;
  desktop::ChildProcess process_;
  bool secure_;
  int port_ = 0;
};

}  // namespace veloria::tests
