#include "main/SystemServices.h"

#include "platform/posix/files/UserFolders.h"

namespace veloria {

SystemServices::SystemServices(const Environment& environment, const Ports& ports)
    : state_(*ports.system, *ports.timers),
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

}  // namespace veloria
