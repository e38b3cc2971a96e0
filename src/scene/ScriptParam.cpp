#include "scene/ScriptParam.h"

#include <algorithm>
#include <cmath>

namespace veloria {

constexpr std::array<ScriptParamInfo, scriptParamCount> scriptParams = [] {
  std::array<ScriptParamInfo, scriptParamCount> rows{};
  const auto add = [&](const ScriptParamInfo& row) { rows.at(static_cast<std::size_t>(row.param)) = row; };
#define VELORIA_KEYWORD(name, low, high, keyword) \
  add({ScriptParam::keyword, #keyword, {low, high}, &NimbraConfig::name});
#include "settings/NimbraConfigFields.h"
  return rows;
}();

static_assert(std::ranges::none_of(scriptParams, &std::string_view::empty, &ScriptParamInfo::keyword));

const ScriptParamInfo& info(ScriptParam param) {
  return scriptParams[static_cast<std::size_t>(param)];
}

std::optional<ScriptParam> scriptParamFromKeyword(std::string_view keyword) {
  const auto found = std::ranges::find(scriptParams, keyword, &ScriptParamInfo::keyword);
  return found != scriptParams.end() ? std::optional(found->param) : std::nullopt;
}

double held(ScriptParam param, double value) {
  if (param == ScriptParam::hue) return value - std::floor(value);
  const Range range = info(param).range;
  return std::isfinite(value) ? bounded(value, range) : range.low;
}

void assign(NimbraConfig& config, ScriptParam param, double value) {
  config.*info(param).field = held(param, value);
}

}  // namespace veloria
