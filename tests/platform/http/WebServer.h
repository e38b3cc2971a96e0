#pragma once

#include <stdexcept>
#include <string>

#include "Process.h"

namespace veloria::tests {

/// The web server of server.py on 127.0.0.1, which describes what its addresses answer. Ends with this object. Throws
/// std::runtime_error if it does not start.
class WebServer {
 public:
  /// With the files of a certificate and its key for https, with neither for http.
  explicit WebServer(const std::string& certificate = {}, const std::string& key = {})
      : process_({"python3", VELORIA_WEB_SERVER, certificate, key}, {}, folder_.file("output")),
        secure_(!certificate.empty()) {
    const bool printed = poll(60, [this] { return process_.output().ends_with('\n') || !process_.running(); });
    if (!printed || !process_.running()) throw std::runtime_error("The web server fails: " + process_.output());
    port_ = std::stoi(process_.output());
  }

  std::string url(const std::string& path) const {
    return (secure_ ? "https://127.0.0.1:" : "http://127.0.0.1:") + std::to_string(port_) + path;
  }

 private:
  TemporaryFolder folder_;
  ChildProcess process_;
  bool secure_;
  int port_ = 0;
};

}  // namespace veloria::tests
