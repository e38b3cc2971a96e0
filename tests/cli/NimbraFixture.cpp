#include "NimbraFixture.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

namespace veloria::tests {

// What a background job of a plain shell inherits would make the programs under test deaf.
NimbraFixture::NimbraFixture() {
  for (const int number : {SIGINT, SIGQUIT, SIGHUP}) std::signal(number, SIG_DFL);
}

const std::string& NimbraFixture::program() {
  static const std::string path = VELORIA_NIMBRA;
  return path;
}

std::vector<std::string> NimbraFixture::environment() const {
  const std::string own = std::filesystem::path(program()).parent_path();
  const char* path = std::getenv("PATH");
  return {"XDG_DATA_HOME=" + dataHome, "XDG_RUNTIME_DIR=" + folder.path(),
          "PATH=" + own + ":" + (path != nullptr ? path : "/usr/bin:/bin")};
}

ProcessResult NimbraFixture::nimbra(const std::vector<std::string>& arguments) const {
  return runProcess(program(), arguments, folder.path(), environment());
}

ProcessResult NimbraFixture::shell(const std::string& script) const {
  return runProcess("/bin/sh", {"-c", script}, folder.path(), environment());
}

std::unique_ptr<desktop::ChildProcess> NimbraFixture::start(const std::vector<std::string>& arguments) const {
  std::vector<std::string> argv{program()};
  argv.insert(argv.end(), arguments.begin(), arguments.end());
  std::map<std::string, std::string> variables;
  for (const auto& entry : environment()) {
    const std::size_t equals = entry.find('=');
    variables[entry.substr(0, equals)] = entry.substr(equals + 1);
  }
  static int count = 0;
  return std::make_unique<desktop::ChildProcess>(argv, variables, folder.file("output-" + std::to_string(count++)));
}

nlohmann::json NimbraFixture::state() const {
  std::ifstream file(statePath, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  auto parsed = nlohmann::json::parse(bytes, nullptr, false);
  return parsed.is_object() ? parsed : nlohmann::json();
}

double NimbraFixture::channel(const std::string& name) const {
  const auto now = state();
  return now.is_object() && now.contains(name) && now[name].is_number() ? now[name].get<double>() : -1;
}

double NimbraFixture::shownChannel(const std::string& name) const {
  const auto status = nlohmann::json::parse(nimbra({"status", "--json"}).output, nullptr, false);
  return status.is_object() ? status.at("channels").value(name, -1.0) : -1;
}

bool NimbraFixture::hasSession(const std::string& prefix) const {
  const auto now = state();
  if (!now.is_object() || !now.contains("sessions")) return false;
  for (const auto& [name, session] : now["sessions"].items()) {
    if (name.starts_with(prefix)) return true;
  }
  return false;
}

}  // namespace veloria::tests
