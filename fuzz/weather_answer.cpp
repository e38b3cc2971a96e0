// Any bytes as the forecast service's answer: readings that can be drawn, or a short reason.

#include <cmath>

#include "FuzzTarget.h"
#include "sources/WeatherSource.h"

void veloria::fuzz(std::string_view bytes) {
  const auto readings = readWeather(bytes);
  if (!readings) return require(!readings.error().empty() && readings.error().size() < 200);
  for (const double value : {readings->temp, readings->wind, readings->gust}) require(std::abs(value) <= 1000);
  for (const double value : {readings->cloud, readings->rain}) require(value >= 0 && value <= 1);
}
