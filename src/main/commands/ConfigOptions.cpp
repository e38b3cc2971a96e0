#include "main/commands/ConfigOptions.h"

#include <string>

#include "base/Files.h"
#include "base/StrictJson.h"
#include "main/commands/Arguments.h"
#include "main/commands/Command.h"
#include "settings/LookPreset.h"
#include "settings/SettingsCodec.h"

namespace veloria {

namespace {

std::string presetNames() {
  std::string names;
  for (const LookPreset& preset : LookPreset::all()) {
    names += (names.empty() ? "\"" : ", \"") + std::string(preset.name) + "\"";
  }
  return names;
}

NimbraConfig configFile(const std::string& path) {
  const auto bytes = readFileBounded(path, maximumJsonBytes);
  if (!bytes) throw WorkError(bytes.error());
  auto config = decodeSettings(*bytes);
  if (!config) throw WorkError(path + ": " + config.error());
  return *std::move(config);
}

}  // namespace

void addConfigOptions(QCommandLineParser& parser) {
  parser.addOptions({
      {"config", "Settings file to begin with (default: the built-in defaults).", "file"},
      {"preset", QString::fromStdString("Look preset: " + presetNames() + "."), "name"},
      {"set", "Set one setting to a JSON value, such as exposure=1.5 or layerMode='\"desktopFull\"'. May be repeated.",
       "key=json"},
      {"script", "Scene script to drive the picture with.", "file"},
  });
}

std::string readScriptFile(const std::string& path) {
  auto text = readFileBounded(path, maximumJsonBytes);
  if (!text) throw WorkError(text.error());
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  return text->starts_with(byteOrderMark) ? text->substr(byteOrderMark.size()) : *std::move(text);
}

NimbraConfig configFrom(const QCommandLineParser& parser) {
  NimbraConfig config;
  if (parser.isSet("config")) config = configFile(parser.value("config").toStdString());
  if (parser.isSet("preset")) {
    const std::string name = parser.value("preset").toStdString();
    const LookPreset* preset = LookPreset::find(name);
    if (preset == nullptr) throw UsageError("--preset '" + name + "' is none of " + presetNames() + ".");
    config = choose(config, *preset);
  }
  for (const QString& text : parser.values("set")) {
    const auto [key, json] = parseAssignment("--set", text.toStdString());
    if (const auto set = setField(config, key, json); !set) throw UsageError("--set " + key + ": " + set.error());
  }
  if (parser.isSet("script")) {
    config.customScript = readScriptFile(parser.value("script").toStdString());
    config.visualizer = Visualizer::script;
  }
  return config;
}

}  // namespace veloria
