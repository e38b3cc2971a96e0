#include <gmock/gmock.h>

#include "platform/macos/system/BundlePlaces.h"
#include "system/CommandLineTool.h"

namespace veloria {
namespace {

class NoSystem final : public CommandLinePort {
 public:
  std::string output(const std::vector<std::string>&) override { return {}; }
  bool isWritableFolder(const std::filesystem::path&) override { return false; }
  bool isRunnable(const std::filesystem::path&) override { return false; }
};

TEST(BundlePlaces, theCommandToPasteNamesTheOneInTheBundle) {
  NoSystem system;
  const auto command = bundledCommand("/Applications/Veloria.app");
  CommandLineTool tool(system, [](std::string_view) { return std::nullopt; },
                       {.command = command, .home = "/Users/me"});
  EXPECT_EQ(tool.manualCommand(),
            "sudo ln -sf '/Applications/Veloria.app/Contents/MacOS/nimbra' /usr/local/bin/nimbra");
}

}  // namespace
}  // namespace veloria
