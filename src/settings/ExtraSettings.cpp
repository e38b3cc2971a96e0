#include "settings/ExtraSettings.h"

#include "base/StrictJson.h"

namespace veloria {

namespace {

constexpr const char* edgeKey = "edge";

}  // namespace

std::string encodeExtraSettings(const ExtraSettings& extra) {
  return nlohmann::ordered_json{{edgeKey, rawValue(extra.edge)}}.dump(2) + '\n';
}

ExtraSettings decodeExtraSettings(std::string_view bytes) {
  ExtraSettings extra;
  const auto json = parseStrictJson(bytes);
  if (!json || !json->is_object()) return extra;
  const auto edge = json->find(edgeKey);
  if (edge == json->end() || !edge->is_string()) return extra;
  extra.edge = fromRawValue<EdgeChoice>(edge->get_ref<const std::string&>()).value_or(extra.edge);
  return extra;
}

}  // namespace veloria
