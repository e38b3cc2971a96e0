#include <gmock/gmock.h>

#include <cmath>

#include "sources/WeatherSource.h"

namespace veloria::tests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string current(const std::string& members) {
  return "{\"current\": {" + members + "}}";
}

TEST(WeatherReadings, ReadsEachMemberWithinItsRange) {
  const std::vector<std::pair<std::string, WeatherReadings>> cases{
      {"", {}},
      {R"("precipitation": 0.1)", {.rain = 0.02}},
      {R"("precipitation": 12)", {.rain = 1}},
      {R"("cloud_cover": 250)", {.cloud = 1}},
      {R"("temperature_2m": 1e308, "wind_speed_10m": -1e308, "wind_gusts_10m": 18446744073709551615)",
       {.temp = 1000, .wind = -1000, .gust = 1000}},
      {R"("temperature_2m": "21", "wind_speed_10m": true, "wind_gusts_10m": null, "cloud_cover": [50])", {}},
      {R"("time": "2025-03-09T14:15", "interval": 900, "temperature_2m": -3.4, "wind_speed_10m": 7,
          "wind_gusts_10m": 18.3, "cloud_cover": 75, "precipitation": 2.5)",
       {.temp = -3.4, .wind = 7, .gust = 18.3, .cloud = 0.75, .rain = 0.5}},
  };
  for (const auto& [members, expected] : cases) {
    const auto readings = readWeather(current(members));
    ASSERT_TRUE(readings) << members << ": " << readings.error();
    EXPECT_EQ(*readings, expected) << members;
  }
}

TEST(WeatherReadings, OtherAnswersAreErrors) {
  for (const char* body : {"[]", "null", "{}", R"({"current": null})", R"({"current": [{}]})"}) {
    EXPECT_EQ(readWeather(body).error(), "Unexpected response") << body;
  }
  EXPECT_THAT(readWeather("<!DOCTYPE html><html>").error(), StartsWith("line 1, column 1: "));
}

/// Keeps the requests until the test answers them.
struct ScriptedFetcher final : HttpFetcher {
  struct Request {
    std::string url;
    Done done;
  };
  void get(const std::string& url, std::size_t, double, Done done) override { requests.push_back({url, done}); }
  void answer(const Result<std::string>& result) { requests.back().done(result); }
  std::vector<Request> requests;
};

const std::string mild = current(
    R"("temperature_2m": 12.3, "wind_speed_10m": 8, "wind_gusts_10m": 15.5, "cloud_cover": 75, "precipitation": 12)");

class WeatherSourceTest : public testing::Test {
 protected:
  void tick(double latitude = 39.7392, double longitude = -104.9903) { weather.refreshIfStale(latitude, longitude); }
  WeatherReadings readings() const {
    return {weather.temp(), weather.wind(), weather.gust(), weather.cloud(), weather.rain()};
  }

  const WeatherReadings mildReadings{.temp = 12.3, .wind = 8, .gust = 15.5, .cloud = 0.75, .rain = 1};
  double now = 1000;
  ScriptedFetcher http;
  WeatherSource weather{{.http = &http, .clock = [this] { return now; }, .baseUrl = "https://weather.example/api"}};
};

TEST_F(WeatherSourceTest, AsksOnceAndKeepsTheAnswerForTenMinutes) {
  for (int i = 0; i < 10; ++i, now += 0.1) tick();
  ASSERT_EQ(http.requests.size(), 1U);
  EXPECT_EQ(http.requests[0].url,
            "https://weather.example/api/v1/forecast?latitude=39.7392&longitude=-104.9903"
            "&current=temperature_2m,wind_speed_10m,wind_gusts_10m,cloud_cover,precipitation&wind_speed_unit=mph");
  EXPECT_TRUE(weather.inFlight() && !weather.hasReadings());
  http.answer(mild);
  EXPECT_EQ(readings(), mildReadings);
  EXPECT_TRUE(!weather.inFlight() && weather.hasReadings());
  const double answered = now;
  now = answered + 599.9;
  tick(51.5, -0.1);
  EXPECT_EQ(http.requests.size(), 1U);
  now = answered + 600;
  tick(51.5, -0.1);
  ASSERT_EQ(http.requests.size(), 2U);
  EXPECT_THAT(http.requests[1].url, HasSubstr("latitude=51.5000&longitude=-0.1000&"));
}

TEST_F(WeatherSourceTest, ItsClockGoesOnThroughANight) {
  const WeatherSource::Ports usual;
  EXPECT_EQ(*usual.clock.target<double (*)()>(), &continuousTime);
}

TEST_F(WeatherSourceTest, SendsPlacesOnTheGlobeOnly) {
  for (const auto& [latitude, longitude] : {std::pair{std::nan(""), 0.0}, {0, std::nan("")}, {90.1, 0}, {0, -180.1}}) {
    tick(latitude, longitude);
    EXPECT_EQ(weather.lastError(), "The location must lie within latitude ±90 and longitude ±180.");
  }
  EXPECT_TRUE(http.requests.empty());
  for (const auto& [latitude, longitude, items] : {std::tuple{90.0, -180.0, "latitude=90.0000&longitude=-180.0000&"},
                                                   {1e-9, 0.00005001, "latitude=0.0000&longitude=0.0001&"},
                                                   {-33.868819, 151.209291, "latitude=-33.8688&longitude=151.2093&"}}) {
    tick(latitude, longitude);
    EXPECT_THAT(http.requests.back().url, HasSubstr(items));
    http.answer(Failure{"offline"});
    EXPECT_EQ(weather.lastError(), "offline");
  }
}

TEST_F(WeatherSourceTest, AFailureKeepsTheReadingsAndIsRepeatedWithTheNextTick) {
  tick();
  http.answer(mild);
  now += 600;
  for (const std::size_t requests : {2U, 3U}) {
    tick();
    ASSERT_EQ(http.requests.size(), requests);
    http.answer(std::string("[]"));
    EXPECT_EQ(weather.lastError(), "Unexpected response");
    EXPECT_EQ(readings(), mildReadings);
  }
  tick();
  http.answer(current(R"("wind_speed_10m": 3)"));
  EXPECT_EQ(weather.lastError(), std::nullopt);
  EXPECT_EQ(readings(), WeatherReadings{.wind = 3});
}

TEST_F(WeatherSourceTest, DescribesTheWeatherInOneLine) {
  tick();
  http.answer(current(R"("temperature_2m": -0.4, "wind_speed_10m": 7.5, "wind_gusts_10m": 15.4, "cloud_cover": 75)"));
  EXPECT_EQ(weather.readout(), "0°C · wind 8 mph · gusts 15 mph · cloud 75%");
}

}  // namespace
}  // namespace veloria::tests
