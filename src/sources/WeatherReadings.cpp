#include "sources/WeatherReadings.h"

#include <algorithm>

#include "base/StrictJson.h"

namespace veloria {

namespace {

constexpr double mostOfAnything = 1000;
constexpr double fullCoverPercent = 100;
constexpr double fullRainMillimetres = 5;

double number(const nlohmann::json& current, const char* name) {
  const auto member = current.find(name);
  return member != current.end() && member->is_number() ? member->get<double>() : 0;
}

double plausible(double value) {
  return std::clamp(value, -mostOfAnything, mostOfAnything);
}

double share(double value, double full) {
  return std::clamp(value, 0.0, full) / full;
}

}  // namespace

Result<WeatherReadings> readWeather(std::string_view body) {
  const auto answer = parseStrictJson(body);
  if (!answer) return Failure{answer.error()};
  const auto current = answer->is_object() ? answer->find("current") : answer->end();
  if (current == answer->end() || !current->is_object()) return Failure{"Unexpected response"};
  return WeatherReadings{
      .temp = plausible(number(*current, "temperature_2m")),
      .wind = plausible(number(*current, "wind_speed_10m")),
      .gust = plausible(number(*current, "wind_gusts_10m")),
      .cloud = share(number(*current, "cloud_cover"), fullCoverPercent),
      .rain = share(number(*current, "precipitation"), fullRainMillimetres),
  };
}

}  // namespace veloria
