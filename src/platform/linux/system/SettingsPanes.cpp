#include "platform/linux/system/SettingsPanes.h"

#include <functional>
#include <map>

namespace veloria {

namespace {

using Commands = std::vector<SettingsCommand>;

/// The same pane with each of the programs that a desktop's versions have had for it.
Commands withPrograms(const std::vector<std::string>& programs, const SettingsCommand& arguments) {
  Commands commands;
  for (const std::string& program : programs) {
    commands.push_back({program});
    commands.back().insert(commands.back().end(), arguments.begin(), arguments.end());
  }
  return commands;
}

// The panel has no pane of its own.
Commands gnome(SystemPane pane) {
  const std::map<SystemPane, SettingsCommand> panels{{SystemPane::menuBar, {}},
                                                     {SystemPane::appearance, {"background"}},
                                                     {SystemPane::accessibilityDisplay, {"universal-access"}},
                                                     {SystemPane::wallpaper, {"background"}}};
  return withPrograms({"gnome-control-center"}, panels.at(pane));
}

// Panels are edited in place; their look comes with the Plasma style.
Commands kde(SystemPane pane) {
  const std::map<SystemPane, SettingsCommand> modules{{SystemPane::menuBar, {"kcm_desktoptheme"}},
                                                      {SystemPane::appearance, {"kcm_lookandfeel"}},
                                                      {SystemPane::accessibilityDisplay, {"kcm_access"}},
                                                      {SystemPane::wallpaper, {"kcm_wallpaper"}}};
  return withPrograms({"systemsettings", "systemsettings5", "kcmshell6", "kcmshell5"}, modules.at(pane));
}

Commands xfce(SystemPane pane) {
  const std::map<SystemPane, SettingsCommand> programs{
      {SystemPane::menuBar, {"xfce4-panel", "--preferences"}},
      {SystemPane::appearance, {"xfce4-appearance-settings"}},
      {SystemPane::accessibilityDisplay, {"xfce4-accessibility-settings"}},
      {SystemPane::wallpaper, {"xfdesktop-settings"}}};
  return {programs.at(pane), {"xfce4-settings-manager"}};
}

Commands cinnamon(SystemPane pane) {
  const std::map<SystemPane, SettingsCommand> modules{{SystemPane::menuBar, {"panel"}},
                                                      {SystemPane::appearance, {"themes"}},
                                                      {SystemPane::accessibilityDisplay, {"accessibility"}},
                                                      {SystemPane::wallpaper, {"backgrounds"}}};
  return withPrograms({"cinnamon-settings"}, modules.at(pane));
}

Commands mate(SystemPane pane) {
  const std::map<SystemPane, SettingsCommand> programs{
      {SystemPane::menuBar, {"mate-control-center"}},
      {SystemPane::appearance, {"mate-appearance-properties"}},
      {SystemPane::accessibilityDisplay, {"mate-at-properties"}},
      {SystemPane::wallpaper, {"mate-appearance-properties", "--show-page=background"}}};
  return {programs.at(pane), {"mate-control-center"}};
}

}  // namespace

std::vector<SettingsCommand> paneCommands(const std::vector<std::string>& desktops, SystemPane pane) {
  const std::map<std::string, std::function<Commands(SystemPane)>> known{
      {"gnome", gnome}, {"kde", kde}, {"xfce", xfce}, {"cinnamon", cinnamon}, {"x-cinnamon", cinnamon}, {"mate", mate}};
  for (const std::string& name : desktops) {
    if (const auto desktop = known.find(name); desktop != known.end()) return desktop->second(pane);
  }
  return {};
}

}  // namespace veloria
