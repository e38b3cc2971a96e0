// Any bytes as the forecast service's answer: readings that can be drawn, or a short reason.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "sources/WeatherSource.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

bool within(double value, double low, double high) {
  return value >= low && value <= high;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto readings = veloria::readWeather({reinterpret_cast<const char*>(data), size});
  if (!readings) {
    require(!readings.error().empty() && readings.error().size() < 200);
    return 0;
  }
  for (const double value : {readings->temp, readings->wind, readings->gust}) require(within(value, -1000, 1000));
  for (const double value : {readings->cloud, readings->rain}) require(within(value, 0, 1));
  return 0;
}
