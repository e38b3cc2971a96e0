#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "base/Files.h"
#include "base/PlainNumber.h"
#include "base/Text.h"
#include "platform/linux/panel/PanelSettings.h"
#include "platform/posix/files/UserFolders.h"
#include "platform/posix/process/Programs.h"

namespace veloria {

namespace fs = std::filesystem;

namespace {

using nlohmann::json;

const std::string tool = "plasma-apply-desktoptheme";
const std::string ours = "veloria-clear";
constexpr double patienceSeconds = 10;
constexpr std::size_t mostBytes = std::size_t{1} << 20;

const char* const metadata = R"({
  "KPlugin": {
    "Description": "Your style with a clear panel",
    "EnabledByDefault": true,
    "Id": "veloria-clear",
    "License": "MIT",
    "Name": "Clear panel for Veloria",
    "Version": "1"
  },
  "X-Plasma-API": "5.0"
}
)";

/// The nine parts of a frame, all clear, and the space around its content.
const char* const background = R"(<svg xmlns="http://www.w3.org/2000/svg" width="40" height="32">
<g fill="#000" fill-opacity="0">
<rect id="topleft" x="0" y="0" width="4" height="4"/>
<rect id="top" x="4" y="0" width="4" height="4"/>
<rect id="topright" x="8" y="0" width="4" height="4"/>
<rect id="left" x="0" y="4" width="4" height="4"/>
<rect id="center" x="4" y="4" width="4" height="4"/>
<rect id="right" x="8" y="4" width="4" height="4"/>
<rect id="bottomleft" x="0" y="8" width="4" height="4"/>
<rect id="bottom" x="4" y="8" width="4" height="4"/>
<rect id="bottomright" x="8" y="8" width="4" height="4"/>
<rect id="hint-top-margin" x="16" y="0" width="4" height="4"/>
<rect id="hint-bottom-margin" x="16" y="4" width="4" height="4"/>
<rect id="hint-left-margin" x="16" y="8" width="4" height="4"/>
<rect id="hint-right-margin" x="16" y="12" width="4" height="4"/>
<rect id="thick-center" x="24" y="0" width="4" height="4"/>
<rect id="thick-hint-top-margin" x="32" y="0" width="8" height="8"/>
<rect id="thick-hint-bottom-margin" x="32" y="8" width="8" height="8"/>
<rect id="thick-hint-left-margin" x="32" y="16" width="8" height="8"/>
<rect id="thick-hint-right-margin" x="32" y="24" width="8" height="8"/>
</g>
</svg>
)";

bool isStyleName(const std::string& name) {
  return isPlainText(name, 200) && !name.starts_with('-') && !name.starts_with('.') && name.find('/') == name.npos;
}

/// The style in use, in what the tool lists: " * name (words of the user's language)".
std::optional<std::string> currentStyle(std::string_view list) {
  for (const std::string_view line : splitText(list, '\n')) {
    const auto words = line.find(" (");
    if (!line.starts_with(" * ") || words == line.npos) continue;
    std::string name(line.substr(3, words - 3));
    if (isStyleName(name)) return name;
  }
  return std::nullopt;
}

/// The colour of text, "r,g,b" in the group of windows; empty if the file has none.
std::string textColour(std::string_view settings) {
  bool inside = false;
  for (const std::string_view line : splitText(settings, '\n')) {
    if (line.starts_with('[')) inside = trimmed(line) == "[Colors:Window]";
    const auto entry = keyAndValue(line);
    if (inside && entry && entry->first == "ForegroundNormal") return std::string(entry->second);
  }
  return {};
}

bool isLight(std::string_view colour) {
  constexpr std::array weights{0.3, 0.59, 0.11};
  const auto parts = splitText(colour, ',');
  double light = 0;
  for (std::size_t i = 0; i < std::min(parts.size(), weights.size()); ++i) {
    light += weights.at(i) * plainNumber(trimmed(parts[i])).value_or(0);
  }
  return light > 127;
}

std::string textOf(const fs::path& file) {
  auto text = readFileBounded(file, mostBytes);
  return text ? *std::move(text) : std::string();
}

class PlasmaPanel final : public PanelSettings {
 public:
  explicit PlasmaPanel(const Environment& environment) {
    if (const auto config = configFolder(environment)) config_ = config->parent_path();
    if (const auto data = dataFolder(environment)) styles_.push_back(data->parent_path() / "plasma/desktoptheme");
    std::string others = environment("XDG_DATA_DIRS").value_or("");
    if (others.empty()) others = "/usr/local/share:/usr/share";
    for (const std::string_view folder : splitText(others, ':')) {
      if (fs::path(folder).is_absolute()) styles_.push_back(fs::path(folder) / "plasma/desktoptheme");
    }
  }

  Result<std::vector<PanelSetting>> look() override {
    const auto list = commandOutput({tool, "--list-themes"}, patienceSeconds, mostBytes);
    if (!list) return Failure{"Plasma's program " + tool + " is missing or does not answer."};
    const auto style = currentStyle(*list);
    if (!style) return Failure{"Plasma's program " + tool + " does not tell the style in use."};
    return std::vector{PanelSetting{"style", *style, ours}};
  }

  Result<Done> write(const std::string&, const json& value) override {
    const auto style = value.is_string() ? value.get<std::string>() : std::string();
    if (!isStyleName(style)) return Failure{"The Plasma style to put back has no proper name."};
    if (style == ours) {
      auto made = makeOurs();
      if (!made) return made;
    }
    if (!commandOutput({tool, style}, patienceSeconds, mostBytes)) {
      return Failure{"Plasma did not change its style to '" + style + "'."};
    }
    std::error_code ignored;
    if (style != ours) fs::remove_all(styles_.front() / ours, ignored);
    return Done{};
  }

 private:
  Result<Done> makeOurs() {
    if (config_.empty()) return Failure{"There is no home folder to install the style in."};
    const auto settings = look();
    if (!settings) return Failure{settings.error()};
    const auto base = settings->front().now.get<std::string>();
    if (base == ours) return Done{};
    std::vector<std::pair<std::string, std::string>> files{
        {"metadata.json", metadata},
        {"plasmarc", "[Settings]\nFallbackTheme=" + base +
                         "\n\n[BlurBehindEffect]\nenabled=false\n\n[ContrastEffect]\nenabled=false\n\n"
                         "[AdaptiveTransparency]\nenabled=false\n"}};
    for (const char* folder : {"", "translucent/", "solid/"}) {
      files.emplace_back(std::string(folder) + "widgets/panel-background.svg", background);
    }
    if (auto colours = coloursFor(base); !colours.empty()) files.emplace_back("colors", std::move(colours));
    return installFiles(styles_.front() / ours, files);
  }

  /// Light text, which the light behind it needs: the colours of the style itself or, if these are dark, of Plasma's
  /// dark style. Empty: those of the user's colour scheme, which are right, or none is installed that is.
  std::string coloursFor(const std::string& style) const {
    std::string own = coloursOf(style);
    if (isLight(textColour(own))) return own;
    if (own.empty() && isLight(textColour(textOf(config_ / "kdeglobals")))) return own;
    std::string dark = coloursOf("breeze-dark");
    return dark.empty() ? own : dark;
  }

  std::string coloursOf(const std::string& style) const {
    for (const fs::path& folder : styles_) {
      if (std::string colours = textOf(folder / style / "colors"); !colours.empty()) return colours;
    }
    return {};
  }

  fs::path config_;
  std::vector<fs::path> styles_;
};

}  // namespace

std::unique_ptr<PanelSettings> plasmaPanel(const Environment& environment) {
  return std::make_unique<PlasmaPanel>(environment);
}

}  // namespace veloria
