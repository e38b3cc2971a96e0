#pragma once

#include <string_view>

#include "base/Result.h"

namespace veloria {

/// The weather at one place. All values are finite.
struct WeatherReadings {
  double temp = 0;   ///< air temperature in degrees Celsius, -1000 to 1000
  double wind = 0;   ///< wind speed 10 m above the ground in miles per hour, -1000 to 1000
  double gust = 0;   ///< speed of the gusts, likewise
  double cloud = 0;  ///< the share of the sky that is covered, 0 to 1
  double rain = 0;   ///< precipitation, 0 to 1: from 5 mm up counts as full
  bool operator==(const WeatherReadings&) const = default;
};

/// Reads an answer of the forecast service, from bytes of any origin: the object "current" in a JSON object, in it the
/// numbers "temperature_2m", "wind_speed_10m", "wind_gusts_10m", "cloud_cover" (percent) and "precipitation"
/// (millimetres). One that is missing or no number reads as 0; one that is out of its range, as no weather is, is held
/// to it. The error is that of parseStrictJson() when the body is not JSON, else "Unexpected response". Any thread.
Result<WeatherReadings> readWeather(std::string_view body);

}  // namespace veloria
