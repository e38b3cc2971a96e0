#include "main/SystemServices.h"

#include <utility>

#include "platform/linux/files/UserFolders.h"

namespace veloria {

namespace {

std::string problemOf(const Result<Done>& result) {
  return result ? std::string() : result.error();
}

}  // namespace

SystemServices::SystemServices(const Environment& environment, const std::filesystem::path& program,
                               TimerFactory& timers, std::function<bool()> transparencyReduced)
    : system_({.environment = environment, .transparencyReduced = std::move(transparencyReduced)}),
      state_(system_, timers),
      tool_(commandLine_, environment,
            {.command = commandBeside(program), .home = homeFolder(environment).value_or("")}),
      autostart_(environment, program),
      loginItem_(autostart_) {}

CommandLinePorts SystemServices::commandLinePorts() {
  return {.look = [this] { return tool_.look(); },
          .install = [this] { tool_.install(); },
          .uninstall = [this] { tool_.uninstall(); }};
}

LoginItemPorts SystemServices::loginItemPorts() {
  return {.isEnabled = [this] { return loginItem_.isEnabled(); }, .set = [this](bool on) { loginItem_.set(on); }};
}

SystemFactsPorts SystemServices::systemFactsPorts() {
  return {.facts = [this] { return state_.facts().get(); },
          .openTransparency = [this] { return problemOf(state_.open(SystemPane::appearance)); },
          .openContrast = [this] { return problemOf(state_.open(SystemPane::accessibilityDisplay)); }};
}

}  // namespace veloria
