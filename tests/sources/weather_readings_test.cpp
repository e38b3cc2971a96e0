#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "sources/WeatherReadings.h"

namespace veloria {
namespace {

std::string current(const std::string& members) {
  return "{\"current\": {" + members + "}}";
}

TEST(WeatherReadingsTest, ReadsAnAnswerOfTheService) {
  const auto readings = readWeather(R"({
    "latitude": 39.738, "longitude": -104.98, "elevation": 1609.0, "timezone": "GMT",
    "current_units": {"temperature_2m": "°C", "wind_speed_10m": "mp/h"},
    "current": {"time": "2025-03-09T14:15", "interval": 900, "temperature_2m": -3.4, "wind_speed_10m": 7,
                "wind_gusts_10m": 18.3, "cloud_cover": 75, "precipitation": 2.5}})");
  ASSERT_TRUE(readings);
  EXPECT_EQ(*readings, (WeatherReadings{.temp = -3.4, .wind = 7, .gust = 18.3, .cloud = 0.75, .rain = 0.5}));
}

TEST(WeatherReadingsTest, OneMemberAtATime) {
  struct Case {
    std::string members;
    WeatherReadings expected;
  };
  const std::vector<Case> cases{
      {"", {}},
      {R"("precipitation": 0.1)", {.rain = 0.02}},
      {R"("precipitation": 5)", {.rain = 1}},
      {R"("precipitation": 12)", {.rain = 1}},
      {R"("precipitation": -1)", {}},
      {R"("cloud_cover": 100)", {.cloud = 1}},
      {R"("cloud_cover": 250)", {.cloud = 1}},
      {R"("cloud_cover": -20)", {}},
      {R"("temperature_2m": 1e308, "wind_speed_10m": -1e308, "wind_gusts_10m": 18446744073709551615)",
       {.temp = 1000, .wind = -1000, .gust = 1000}},
      {R"("temperature_2m": "21", "wind_speed_10m": true, "wind_gusts_10m": null, "cloud_cover": [50])", {}},
      {R"("temperature_2m": {"value": 3}, "wind_speed_10m": 4)", {.wind = 4}},
      {R"("Temperature_2m": 3, "temperature_80m": 3)", {}},
      {R"("wind_speed_10m": 1, "wind_speed_10m": 2)", {.wind = 2}},
  };
  for (const auto& c : cases) {
    const auto readings = readWeather(current(c.members));
    ASSERT_TRUE(readings) << c.members << ": " << readings.error();
    EXPECT_EQ(*readings, c.expected) << c.members;
  }
}

TEST(WeatherReadingsTest, JsonOfAnotherShapeIsUnexpected) {
  for (const char* body : {"[]", "null", "7", "\"current\"", "{}", R"({"current": null})", R"({"current": [{}]})",
                           R"({"current": "mild"})", R"({"Current": {}})", R"([{"current": {}}])",
                           R"({"error": true, "reason": "Latitude must be in range of -90 to 90°. Given: 95."})"}) {
    const auto readings = readWeather(body);
    ASSERT_FALSE(readings) << body;
    EXPECT_EQ(readings.error(), "Unexpected response") << body;
  }
}

TEST(WeatherReadingsTest, WhatIsNoJsonSaysWhere) {
  for (const char* body : {"", "<!DOCTYPE html><html>", "\xff"}) {
    const auto readings = readWeather(body);
    ASSERT_FALSE(readings) << body;
    EXPECT_THAT(readings.error(), testing::StartsWith("line 1, column 1: ")) << body;
  }
}

}  // namespace
}  // namespace veloria
