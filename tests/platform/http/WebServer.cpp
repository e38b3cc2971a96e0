#include "WebServer.h"

#include <stdexcept>
#include <vector>

namespace veloria::tests {

namespace {

constexpr double startSeconds = 60;

std::vector<std::string> commandLine(const Certificate* certificate) {
  std::vector<std::string> argv{"python3", VELORIA_TEST_DATA "/server.py"};
  if (certificate != nullptr) argv.insert(argv.end(), {certificate->file, certificate->keyFile});
  return argv;
}

}  // namespace

Certificate makeCertificate(const TemporaryFolder& folder, const std::string& name, const std::string& hosts) {
  Certificate made{folder.file(name + ".pem"), folder.file(name + ".key")};
  const auto result =
      runProcess("/usr/bin/env", {"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
                                  "-nodes", "-days", "2", "-subj", "/CN=" + name, "-addext", "subjectAltName=" + hosts,
                                  "-out", made.file, "-keyout", made.keyFile});
  if (result.exitCode != 0) throw std::runtime_error("openssl: " + result.errors);
  return made;
}

WebServer::WebServer(const Certificate* certificate)
    : process_(commandLine(certificate), {}, folder_.file("output")), secure_(certificate != nullptr) {
  const bool printed =
      desktop::poll(startSeconds, [this] { return process_.output().ends_with('\n') || !process_.running(); });
  if (!printed || !process_.running()) throw std::runtime_error("The web server does not start: " + process_.output());
  port_ = std::stoi(process_.output());
}

std::string WebServer::url(const std::string& path) const {
  return (secure_ ? "https://127.0.0.1:" : "http://127.0.0.1:") + std::to_string(port_) + path;
}

}  // namespace veloria::tests
