#include <utility>

#include "base/Text.h"
#include "platform/linux/panel/PanelSettings.h"
#include "platform/linux/panel/PanelText.h"
#include "platform/posix/process/Programs.h"

namespace veloria {

namespace {

using nlohmann::json;

constexpr std::size_t longestValue = 500;

std::string schemaOf(const std::string& panel, bool background) {
  const std::string path = "/org/mate/panel/toplevels/" + panel + "/";
  return background ? "org.mate.panel.toplevel.background:" + path + "background/" : "org.mate.panel.toplevel:" + path;
}

// MATE gives the class to panels whose background is not the theme's, and to all that is on them.
const char* const textRules = R"(.mate-custom-panel-background,
.mate-custom-panel-background > menuitem,
PanelToplevel.mate-custom-panel-background > grid > PanelFrame > PanelWidget > button,
#PanelPlug.mate-custom-panel-background > PanelApplet > button,
#PanelPlug.mate-custom-panel-background > PanelApplet > button > box > label,
#PanelPlug.mate-custom-panel-background > PanelApplet > wnck-tasklist > button {
  color: #fff;
  text-shadow: 0 1px 3px rgba(0, 0, 0, 0.85);
  -gtk-icon-shadow: 0 1px 3px rgba(0, 0, 0, 0.85);
}
.mate-custom-panel-background > menuitem,
PanelToplevel.mate-custom-panel-background > grid > PanelFrame > PanelWidget > button,
#PanelPlug.mate-custom-panel-background > PanelApplet > button,
#PanelPlug.mate-custom-panel-background > PanelApplet > wnck-tasklist > button {
  background: none;
  border-color: transparent;
  box-shadow: none;
}
.mate-custom-panel-background > menuitem:hover,
#PanelPlug.mate-custom-panel-background > PanelApplet > button:hover,
#PanelPlug.mate-custom-panel-background > PanelApplet > wnck-tasklist > button:hover,
#PanelPlug.mate-custom-panel-background > PanelApplet > wnck-tasklist > button:checked {
  background: rgba(255, 255, 255, 0.2);
}
.mate-custom-panel-background .popup {
  text-shadow: none;
  -gtk-icon-shadow: none;
}
)";

/// Keys are "panel/key".
class MatePanel final : public PanelSettings {
 public:
  explicit MatePanel(const Environment& environment)
      : searchPath_(environment("PATH").value_or("")), text_(environment, "mate", textRules) {}

  Result<std::vector<PanelSetting>> look() override {
    auto panels = panelsAt("'top'");
    if (panels && panels->empty()) panels = panelsAt("'bottom'");
    if (!panels) return Failure{panels.error()};
    if (panels->empty()) return Failure{"MATE has no panel at the top or the bottom of the screen."};
    std::vector<PanelSetting> settings;
    for (const std::string& panel : *panels) {
      for (const auto& [key, clear] : {std::pair{"color", "'rgba(0,0,0,0)'"}, {"type", "'color'"}}) {
        auto now = readGsetting(schemaOf(panel, true), key);
        if (!now) return Failure{now.error()};
        settings.push_back({panel + "/" + key, *std::move(now), clear});
      }
    }
    settings.push_back(text_.look());
    return settings;
  }

  Result<Done> write(const std::string& key, const json& value) override {
    if (key == PanelText::key) {
      auto written = text_.write(value);
      return written ? restartPanel() : written;
    }
    const auto text = value.is_string() ? value.get<std::string>() : std::string();
    if (!text.starts_with('\'') || !isPlainText(text, longestValue)) {
      return Failure{"The value to put back for " + key + " is of another kind."};
    }
    const auto slash = key.find('/');
    return writeGsetting(schemaOf(key.substr(0, slash), true), key.substr(slash + 1), text);
  }

 private:
  Result<Done> restartPanel() const {
    const auto program = findProgram("mate-panel", searchPath_);
    return program ? startDetached(*program, {"--replace"}) : Failure{"The program mate-panel is missing."};
  }

  static Result<std::vector<std::string>> panelsAt(const std::string& edge) {
    const auto list = readGsetting("org.mate.panel", "toplevel-id-list");
    if (!list) return Failure{list.error()};
    std::vector<std::string> panels;
    for (const std::string& panel : plainWordsInList(*list)) {
      const auto orientation = readGsetting(schemaOf(panel, false), "orientation");
      if (!orientation) return Failure{orientation.error()};
      if (*orientation == edge) panels.push_back(panel);
    }
    return panels;
  }

  std::string searchPath_;
  PanelText text_;
};

}  // namespace

std::unique_ptr<PanelSettings> matePanel(const Environment& environment) {
  return std::make_unique<MatePanel>(environment);
}

}  // namespace veloria
