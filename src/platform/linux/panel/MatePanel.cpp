#include <utility>

#include "base/Text.h"
#include "platform/linux/panel/PanelSettings.h"

namespace veloria {

namespace {

using nlohmann::json;

constexpr std::size_t longestValue = 500;

std::string schemaOf(const std::string& panel, bool background) {
  const std::string path = "/org/mate/panel/toplevels/" + panel + "/";
  return background ? "org.mate.panel.toplevel.background:" + path + "background/" : "org.mate.panel.toplevel:" + path;
}

/// Keys are "panel/key".
class MatePanel final : public PanelSettings {
 public:
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
    return settings;
  }

  Result<Done> write(const std::string& key, const json& value) override {
    const auto text = value.is_string() ? value.get<std::string>() : std::string();
    if (!text.starts_with('\'') || !isPlainText(text, longestValue)) {
      return Failure{"The value to put back for " + key + " is of another kind."};
    }
    const auto slash = key.find('/');
    return writeGsetting(schemaOf(key.substr(0, slash), true), key.substr(slash + 1), text);
  }

 private:
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
};

}  // namespace

std::unique_ptr<PanelSettings> matePanel() {
  return std::make_unique<MatePanel>();
}

}  // namespace veloria
