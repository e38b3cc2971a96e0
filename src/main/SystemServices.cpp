#include "main/SystemServices.h"

#include "platform/posix/files/UserFolders.h"

namespace veloria {

namespace {

std::string problemOf(const Result<Done>& result) {
  return result ? std::string() : result.error();
}

}  // namespace

SystemServices::SystemServices(const Environment& environment, const Ports& ports)
    : ports_(ports),
      state_(*ports.system, *ports.timers),
      tool_(commandLine_, environment, {.command = ports.command, .home = homeFolder(environment).value_or("")}),
      loginItem_(*ports.loginItem) {}

CommandLinePorts SystemServices::commandLinePorts() {
  const auto alone = [this](auto action) {
    return [this, action] {
      const std::scoped_lock lock(toolLock_);
      return action(tool_);
    };
  };
  return {.look = alone([](CommandLineTool& tool) { return tool.look(); }),
          .install = alone([](CommandLineTool& tool) { tool.install(); }),
          .uninstall = alone([](CommandLineTool& tool) { tool.uninstall(); })};
}

LoginItemPorts SystemServices::loginItemPorts() {
  return {.isEnabled = [this] { return loginItem_.isEnabled(); },
          .set = [this](bool on) { return problemOf(loginItem_.set(on)); }};
}

SystemFactsPorts SystemServices::systemFactsPorts() {
  return {.facts = [this] { return state_.facts().get(); },
          .open = [this](SystemPane pane) { return problemOf(state_.open(pane)); },
          .transparencyPane = ports_.transparencyPane,
          .tintsGlass = ports_.tintsGlass};
}

}  // namespace veloria
