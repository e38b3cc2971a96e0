#include <gmock/gmock.h>

#include <map>

#include "platform/macos/system/BundlePlaces.h"
#include "platform/macos/system/SettingsPaneAddress.h"
#include "system/CommandLineTool.h"

namespace veloria {
namespace {

TEST(SettingsPaneAddress, eachPaneHasItsOwn) {
  const std::map<SystemPane, std::string> expected{
      {SystemPane::menuBar, "x-apple.systempreferences:com.apple.ControlCenter-Settings.extension"},
      {SystemPane::appearance, "x-apple.systempreferences:com.apple.Appearance-Settings.extension"},
      {SystemPane::accessibilityDisplay,
       "x-apple.systempreferences:com.apple.Accessibility-Settings.extension?Seeing_Display"},
      {SystemPane::wallpaper, "x-apple.systempreferences:com.apple.Wallpaper-Settings.extension"}};
  for (const auto& [pane, address] : expected) EXPECT_EQ(paneAddress(pane), address);
}

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
