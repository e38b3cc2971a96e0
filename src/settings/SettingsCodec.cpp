#include "settings/SettingsCodec.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numeric>
#include <utility>

#include "base/PlainNumber.h"
#include "base/StrictJson.h"
#include "base/Text.h"

namespace veloria {

namespace {

using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;

constexpr std::size_t leastStops = 4;
constexpr std::size_t stopChannels = std::tuple_size_v<ColorStop>;

// For each type of field `kind` describes its values, `read` reads one (nothing if the JSON is of another kind) and
// `write` writes one (nothing if `read` would refuse it). The general case is an enum.

template <typename E>
struct Coding {
  static std::string kind() {
    std::string text = "one of ";
    for (const auto raw : rawValues<E>) {
      if (raw != rawValues<E>.front()) text += ", ";
      text.append("\"").append(raw).append("\"");
    }
    return text;
  }
  static std::optional<E> read(const Json& json) {
    if (!json.is_string()) return std::nullopt;
    return fromRawValue<E>(json.get_ref<const std::string&>());
  }
  static std::optional<OrderedJson> write(E value) { return rawValue(value); }
};

template <>
struct Coding<bool> {
  static std::string kind() { return "true or false"; }
  static std::optional<bool> read(const Json& json) {
    if (!json.is_boolean()) return std::nullopt;
    return json.get<bool>();
  }
  static std::optional<OrderedJson> write(bool value) { return value; }
};

template <>
struct Coding<double> {
  static std::string kind() { return "a number"; }
  static std::optional<double> read(const Json& json) {
    if (!json.is_number()) return std::nullopt;
    return json.get<double>();
  }
  static std::optional<OrderedJson> write(double value) {
    if (!std::isfinite(value)) return std::nullopt;
    return value;
  }
};

template <>
struct Coding<std::int64_t> {
  static std::string kind() { return "a whole number"; }
  static std::optional<std::int64_t> read(const Json& json) {
    if (json.is_number_float()) return exactly(json.get<double>());
    if (json.is_number_unsigned() && !std::in_range<std::int64_t>(json.get<std::uint64_t>())) return std::nullopt;
    if (!json.is_number_integer()) return std::nullopt;
    return json.get<std::int64_t>();
  }
  static std::optional<OrderedJson> write(std::int64_t value) { return value; }

 private:
  static std::optional<std::int64_t> exactly(double value) {
    constexpr double limit = 9223372036854775808.0;  // 2 to the power of 63
    // The lowest integer itself is refused here: integers below it, too long for the parser, round to it.
    if (value <= -limit || value >= limit || value != std::trunc(value)) return std::nullopt;
    return static_cast<std::int64_t>(value);
  }
};

template <>
struct Coding<std::string> {
  static std::string kind() { return "a text in double quotes"; }
  static std::optional<std::string> read(const Json& json) {
    if (!json.is_string()) return std::nullopt;
    return json.get<std::string>();
  }
  static std::optional<OrderedJson> write(const std::string& value) { return value; }
};

/// The double with the fewest digits that is this float: 0.55 rather than 0.550000011920929.
double shortest(float value) {
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  return plainNumber({digits.data(), end}).value_or(0);
}

bool isChannel(const Json& json) {
  return json.is_number() && json.get<double>() >= 0 && json.get<double>() <= 1;
}

std::optional<ColorStop> readStop(const Json& json) {
  if (!json.is_array() || json.size() < stopChannels || !std::ranges::all_of(json, isChannel)) return std::nullopt;
  ColorStop stop;
  for (std::size_t i = 0; i < stop.size(); ++i) stop[i] = json[i].get<float>();
  return stop;
}

std::optional<std::vector<ColorStop>> readStops(const Json& json) {
  if (!json.is_array() || json.size() < leastStops) return std::nullopt;
  std::vector<ColorStop> stops;
  for (const Json& element : json) {
    const auto stop = readStop(element);
    if (!stop) return std::nullopt;
    stops.push_back(*stop);
  }
  return stops;
}

bool isDrawable(const Palette& palette) {
  const auto inRange = [](float channel) { return channel >= 0 && channel <= 1; };
  return palette.stops.size() >= leastStops &&
         std::ranges::all_of(palette.stops, [&](const ColorStop& stop) { return std::ranges::all_of(stop, inRange); });
}

template <>
struct Coding<std::optional<Palette>> {
  using Value = std::optional<Palette>;

  static std::string kind() {
    return "null or {\"name\": \"...\", \"stops\": [[r, g, b], ...]} with at least 4 stops of numbers from 0 to 1";
  }
  static std::optional<Value> read(const Json& json) {
    if (json.is_null()) return Value();
    if (!json.is_object() || !json.contains("name") || !json.contains("stops")) return std::nullopt;
    auto name = Coding<std::string>::read(json["name"]);
    auto stops = readStops(json["stops"]);
    if (!name || !stops) return std::nullopt;
    return Palette{std::move(*name), std::move(*stops)};
  }
  static std::optional<OrderedJson> write(const Value& value) {
    if (!value) return OrderedJson();
    if (!isDrawable(*value)) return std::nullopt;
    OrderedJson stops = OrderedJson::array();
    for (const auto& [red, green, blue] : value->stops) {
      stops.push_back(OrderedJson::array({shortest(red), shortest(green), shortest(blue)}));
    }
    return OrderedJson{{"name", value->name}, {"stops", std::move(stops)}};
  }
};

template <typename T>
constexpr bool mayBeMissing = false;
template <typename T>
constexpr bool mayBeMissing<std::optional<T>> = true;

/// Sets a field from a value; the error says what is wrong.
template <typename T>
Result<Done> assign(T& field, std::string_view key, const Json& json) {
  auto value = Coding<T>::read(json);
  if (!value) return Failure{std::string(key) + " must be " + Coding<T>::kind()};
  field = std::move(*value);
  return Done{};
}

template <typename T>
Result<Done> assignMember(T& field, const char* key, const Json& object) {
  const auto member = object.find(key);
  if (member != object.end()) return assign(field, key, *member);
  if constexpr (mayBeMissing<T>) return Done{};
  return Failure{std::string(key) + " is missing"};
}

template <typename T>
bool writeMember(OrderedJson& object, const char* key, const T& field) {
  auto value = Coding<T>::write(field);
  if (value && !(mayBeMissing<T> && value->is_null())) object.push_back({key, std::move(*value)});
  return value.has_value();
}

template <typename T>
SettingsField describe(std::string_view key, const T& initial) {
  return {key, Coding<T>::kind(), Coding<T>::write(initial)->dump()};
}

/// The number of letters to insert, delete or change to turn one word into the other.
std::size_t editDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i);
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = std::exchange(row[j], std::min({changed, row[j] + 1, row[j - 1] + 1}));
    }
  }
  return row.back();
}

/// How much a key differs from what was typed. A key that contains it, or the reverse, counts as one wrong letter.
std::size_t unlikeness(std::string_view typed, std::string_view key) {
  const std::string a = lowerCased(typed);
  const std::string b = lowerCased(key);
  const bool holds = a.size() >= 3 && (b.find(a) != std::string::npos || a.find(b) != std::string::npos);
  return std::min(editDistance(a, b), holds ? std::size_t{1} : a.size() + b.size());
}

/// The keys that may have been meant, the most likely first.
std::vector<std::string_view> nearestKeys(std::string_view typed) {
  constexpr std::size_t longestTyped = 64;
  constexpr std::size_t most = 3;
  if (typed.size() > longestTyped) return {};
  std::vector<std::pair<std::size_t, std::string_view>> ranked;
  for (const SettingsField& field : settingsFields()) ranked.emplace_back(unlikeness(typed, field.key), field.key);
  std::ranges::stable_sort(ranked, {}, &std::pair<std::size_t, std::string_view>::first);
  std::vector<std::string_view> nearest;
  for (const auto& [distance, key] : ranked) {
    if (nearest.size() < most && distance <= 1 + typed.size() / 4) nearest.push_back(key);
  }
  return nearest;
}

Failure unknownKey(std::string_view typed) {
  std::string text = "there is no setting \"" + std::string(typed.substr(0, 64)) + "\"";
  const auto nearest = nearestKeys(typed);
  for (const auto key : nearest) text.append(key == nearest.front() ? "; did you mean " : ", ").append(key);
  if (!nearest.empty()) text += "?";
  return {std::move(text)};
}

}  // namespace

std::optional<std::string> encodeSettings(const NimbraConfig& config) {
  OrderedJson object = OrderedJson::object();
#define VELORIA_FIELD(type, name, initial, group) \
  if (!writeMember(object, #name, config.name)) return std::nullopt;
#include "settings/NimbraConfigFields.h"
  try {
    std::string bytes = object.dump(2) + "\n";
    if (bytes.size() > maximumJsonBytes) return std::nullopt;
    return bytes;
  } catch (const OrderedJson::exception&) {  // a string that is not UTF-8
    return std::nullopt;
  }
}

Result<NimbraConfig> decodeSettings(std::string_view bytes) {
  const auto json = parseStrictJson(bytes);
  if (!json) return Failure{json.error()};
  if (!json->is_object()) return Failure{"not a JSON object"};
  NimbraConfig config;
#define VELORIA_FIELD(type, name, initial, group) \
  if (const auto done = assignMember(config.name, #name, *json); !done) return Failure{done.error()};
#include "settings/NimbraConfigFields.h"
  return config;
}

const std::vector<SettingsField>& settingsFields() {
  static const std::vector<SettingsField> fields = [] {
    const NimbraConfig defaults;
    std::vector<SettingsField> all;
#define VELORIA_FIELD(type, name, initial, group) all.push_back(describe(#name, defaults.name));
#include "settings/NimbraConfigFields.h"
    return all;
  }();
  return fields;
}

Result<Done> setField(NimbraConfig& config, std::string_view key, std::string_view json) {
  const auto value = parseStrictJson(json);
  if (!value && std::ranges::count(settingsFields(), key, &SettingsField::key) > 0) {
    const auto field = std::ranges::find(settingsFields(), key, &SettingsField::key);
    return Failure{std::string(key) + " must be " + field->kind + ", written as JSON (" + value.error() + ")"};
  }
#define VELORIA_FIELD(type, name, initial, group) \
  if (key == #name) return assign(config.name, key, *value);
#include "settings/NimbraConfigFields.h"
  return unknownKey(key);
}

}  // namespace veloria
