#include "sources/WeatherSource.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "base/Log.h"
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

constexpr std::string_view noSuchPlace = "The location must lie within latitude ±90 and longitude ±180.";

bool onTheGlobe(double latitude, double longitude) {
  return std::abs(latitude) <= 90 && std::abs(longitude) <= 180;
}

/// As "%.4f", but with a point in every locale. For values within ±180.
std::string degreesText(double degrees) {
  std::array<char, 16> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), degrees, std::chars_format::fixed, 4).ptr;
  return {text.data(), end};
}

std::string forecastUrl(const std::string& base, double latitude, double longitude) {
  return base + "/v1/forecast?latitude=" + degreesText(latitude) + "&longitude=" + degreesText(longitude) +
         "&current=temperature_2m,wind_speed_10m,wind_gusts_10m,cloud_cover,precipitation&wind_speed_unit=mph";
}

void logReadings(const WeatherReadings& readings) {
  if (!NimbraLog::enabled()) return;
  const auto text = [](double value) { return nlohmann::json(value).dump(); };
  NimbraLog::debug("weather temp=" + text(readings.temp) + " wind=" + text(readings.wind) +
                   " gust=" + text(readings.gust));
}

/// Rounded, so that a little below zero does not show as "-0".
double whole(double value) {
  return std::nearbyint(value) + 0.0;
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

WeatherSource::WeatherSource(Ports ports) : ports_(std::move(ports)) {}

void WeatherSource::refreshIfStale(double latitude, double longitude) {
  if (!ports_.http || fresh() || inFlight_) return;
  if (onTheGlobe(latitude, longitude)) return request(latitude, longitude);
  if (lastError_ != noSuchPlace) lastError_ = noSuchPlace;
}

bool WeatherSource::fresh() const {
  return lastSuccess_ && ports_.clock() - *lastSuccess_ < staleSeconds;
}

void WeatherSource::request(double latitude, double longitude) {
  inFlight_ = true;
  ports_.http->get(forecastUrl(ports_.baseUrl, latitude, longitude), maximumJsonBytes, patienceSeconds,
                   [this, life = std::weak_ptr(life_)](const Result<std::string>& answer) {
                     if (!life.expired()) finish(answer);
                   });
}

void WeatherSource::finish(const Result<std::string>& answer) {
  inFlight_ = false;
  const auto readings = answer ? readWeather(*answer) : Failure{answer.error()};
  if (readings) {
    accept(*readings);
  } else {
    lastError_ = readings.error();
  }
}

void WeatherSource::accept(const WeatherReadings& readings) {
  readings_ = readings;
  lastSuccess_ = ports_.clock();
  lastError_.reset();
  logReadings(readings);
}

std::string WeatherSource::readout() const {
  std::array<char, 128> text{};
  std::snprintf(text.data(), text.size(), "%.0f°C · wind %.0f mph · gusts %.0f mph · cloud %.0f%%", whole(temp()),
                whole(wind()), whole(gust()), whole(cloud() * 100));
  return text.data();
}

}  // namespace veloria
