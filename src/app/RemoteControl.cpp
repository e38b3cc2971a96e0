#include "app/RemoteControl.h"

#include <exception>

#include "base/StrictJson.h"
#include "settings/LookPreset.h"

namespace veloria {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t longestEcho = 64;

Json failure(const std::string& text) {
  return {{"error", text}};
}

std::string textOf(const nlohmann::json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::string presetNames() {
  std::string names;
  for (const LookPreset& preset : LookPreset::all()) names += (names.empty() ? "" : ", ") + std::string(preset.name);
  return names;
}

}  // namespace

std::string RemoteControl::answer(std::string_view question) {
  Json result;
  try {
    result = carryOut(question);
  } catch (const std::exception& error) {
    result = failure(error.what());
  }
  return result.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json RemoteControl::carryOut(std::string_view question) {
  const auto json = parseStrictJson(question);
  if (!json || !json->is_object()) return failure("a question is one line of JSON, an object with a \"command\"");
  const std::string command = textOf(*json, "command");
  if (command == "status") return toJson(ports_.status());
  if (command == "preset") return usePreset(*json);
  if (command == "pause") return setEnabled(false);
  if (command == "resume") return setEnabled(true);
  if (command == "settings") {
    if (!ports_.showSettings) return failure("there is no settings window");
    ports_.showSettings();
    return Json::object();
  }
  return failure("there is no command \"" + command.substr(0, longestEcho) + "\"");
}

Json RemoteControl::usePreset(const nlohmann::json& question) {
  const std::string name = textOf(question, "name");
  const LookPreset* preset = LookPreset::find(name);
  if (preset == nullptr) {
    return failure("there is no preset \"" + name.substr(0, longestEcho) + "\"; there are " + presetNames());
  }
  ports_.settings->choosePreset(*preset);
  return Json::object();
}

Json RemoteControl::setEnabled(bool enabled) {
  ports_.settings->change("enabled", [enabled](NimbraConfig& config) { config.enabled = enabled; });
  return Json::object();
}

}  // namespace veloria
