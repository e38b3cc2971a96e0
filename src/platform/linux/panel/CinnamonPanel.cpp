#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/linux/panel/PanelSettings.h"
#include "platform/posix/files/UserFolders.h"

namespace veloria {

namespace {

using nlohmann::json;

const std::string schema = "org.cinnamon";
const std::string listKey = "enabled-extensions";
const std::string extension = "veloria-clear-panel@tollmere.com";
const std::string quoted = "'" + extension + "'";

const char* const metadata = R"({
  "uuid": "veloria-clear-panel@tollmere.com",
  "name": "Clear panel for Veloria",
  "description": "Makes the panel clear, so that Veloria's light shows behind its text.",
  "cinnamon-version": ["4.0"]
}
)";

const char* const sheet = R"(.veloria-clear .applet-label,
.veloria-clear .applet-box,
.veloria-clear .applet-icon,
.veloria-clear .system-status-icon {
  color: #fff;
  text-shadow: 0 1px 3px rgba(0, 0, 0, 0.85);
  icon-shadow: 0 1px 3px rgba(0, 0, 0, 0.85);
}
)";

const char* const program = R"(const Main = imports.ui.main;
const Mainloop = imports.mainloop;

const clear = 'background-color: transparent; background-image: none; background-gradient-direction: none; ' +
  'border-image: none; border-color: transparent; box-shadow: none;';
let handlers = [];
let later = 0;

function setStyle(style) {
  for (const panel of Main.getPanels()) {
    if (!panel) continue;
    panel.actor.set_style(style);
    if (style) panel.actor.add_style_class_name('veloria-clear');
    else panel.actor.remove_style_class_name('veloria-clear');
  }
}

// Cinnamon makes its panels anew when these settings have changed.
function clearLater() {
  if (later !== 0) return;
  later = Mainloop.idle_add(() => {
    later = 0;
    setStyle(clear);
    return false;
  });
}

function init() {}

function enable() {
  handlers = ['panels-enabled', 'panels-height'].map(key => global.settings.connect('changed::' + key, clearLater));
  setStyle(clear);
}

function disable() {
  for (const handler of handlers) global.settings.disconnect(handler);
  if (later !== 0) Mainloop.source_remove(later);
  later = 0;
  setStyle(null);
}
)";

/// `list` as gsettings prints it, with or without the extension.
std::string listWith(std::string list, bool enabled) {
  if (enabled == (list.find(quoted) != list.npos)) return list;
  if (enabled) {
    const auto end = list.rfind(']');
    if (end == list.npos) return list;
    const bool empty = list.find('\'') == list.npos;
    return empty ? "[" + quoted + "]" : list.insert(end, ", " + quoted);
  }
  for (const std::string& part : {", " + quoted, quoted + ", ", quoted}) {
    if (const auto start = list.find(part); start != list.npos) {
      list.erase(start, part.size());
      break;
    }
  }
  return list == "[]" ? "@as []" : list;
}

class CinnamonPanel final : public PanelSettings {
 public:
  explicit CinnamonPanel(const Environment& environment) {
    if (const auto data = dataFolder(environment)) folder_ = data->parent_path() / "cinnamon/extensions" / extension;
  }

  Result<std::vector<PanelSetting>> look() override {
    const auto list = readGsetting(schema, listKey);
    if (!list) return Failure{list.error()};
    return std::vector{PanelSetting{"extension", list->find(quoted) != list->npos, true}};
  }

  Result<Done> write(const std::string&, const json& value) override {
    if (folder_.empty()) return Failure{"There is no home folder to install the extension in."};
    const bool enable = value == true;
    if (enable) {
      auto installed =
          installFiles(folder_, {{"metadata.json", metadata}, {"stylesheet.css", sheet}, {"extension.js", program}});
      if (!installed) return installed;
    }
    const auto list = readGsetting(schema, listKey);
    if (!list) return Failure{list.error()};
    auto written = writeGsetting(schema, listKey, listWith(*list, enable));
    std::error_code ignored;
    if (written && !enable) std::filesystem::remove_all(folder_, ignored);
    return written;
  }

 private:
  std::filesystem::path folder_;
};

}  // namespace

std::unique_ptr<PanelSettings> cinnamonPanel(const Environment& environment) {
  return std::make_unique<CinnamonPanel>(environment);
}

}  // namespace veloria
