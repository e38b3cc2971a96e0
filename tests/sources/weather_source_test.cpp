#include "sources/WeatherSource.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>
#include <vector>

#include "base/StrictJson.h"

namespace veloria {
namespace {

/// Keeps the requests until the test answers them.
class ScriptedFetcher final : public HttpFetcher {
 public:
  struct Request {
    std::string url;
    std::size_t cap;
    double seconds;
    Done done;
  };

  void get(const std::string& url, std::size_t cap, double seconds, Done done) override {
    requests.push_back({url, cap, seconds, std::move(done)});
  }

  void answer(Result<std::string> result) { requests.back().done(std::move(result)); }

  std::vector<Request> requests;
};

constexpr const char* mildAnswer = R"({"current": {"temperature_2m": 12.3, "wind_speed_10m": 8, "wind_gusts_10m": 15.5,
                                                  "cloud_cover": 75, "precipitation": 12}})";

class WeatherSourceTest : public testing::Test {
 protected:
  void tick(double latitude = 39.7392, double longitude = -104.9903) { weather.refreshIfStale(latitude, longitude); }

  void expectMild() const {
    EXPECT_EQ(weather.temp(), 12.3);
    EXPECT_EQ(weather.wind(), 8);
    EXPECT_EQ(weather.gust(), 15.5);
    EXPECT_EQ(weather.cloud(), 0.75);
    EXPECT_EQ(weather.rain(), 1);
  }

  double now = 1000;
  ScriptedFetcher http;
  WeatherSource weather{{.http = &http, .clock = [this] { return now; }, .baseUrl = "https://weather.example/api"}};
};

TEST_F(WeatherSourceTest, AsksForThePlaceOnceHoweverManyTicksThereAre) {
  for (int i = 0; i < 10; ++i, now += 0.1) tick();
  ASSERT_EQ(http.requests.size(), 1U);
  EXPECT_EQ(http.requests[0].url,
            "https://weather.example/api/v1/forecast?latitude=39.7392&longitude=-104.9903"
            "&current=temperature_2m,wind_speed_10m,wind_gusts_10m,cloud_cover,precipitation&wind_speed_unit=mph");
  EXPECT_EQ(http.requests[0].cap, maximumJsonBytes);
  EXPECT_EQ(http.requests[0].seconds, 30);
  EXPECT_TRUE(weather.inFlight());
}

TEST_F(WeatherSourceTest, AsksTheRealServiceByAClockThatRunsOnInSleepUnlessToldOtherwise) {
  WeatherSource::Ports usual{.http = &http};
  EXPECT_EQ(*usual.clock.target<double (*)()>(), &continuousTime) << "or the weather is stale in the morning";
  WeatherSource(usual).refreshIfStale(0, 0);
  EXPECT_THAT(http.requests.at(0).url, testing::StartsWith("https://api.open-meteo.com/v1/forecast?"));
}

TEST_F(WeatherSourceTest, RoundsThePlaceToFourDecimals) {
  struct Case {
    double latitude, longitude;
    const char* items;
  };
  for (const Case& c : {Case{90, -180, "latitude=90.0000&longitude=-180.0000&"},
                        Case{1e-9, 0.00005001, "latitude=0.0000&longitude=0.0001&"},
                        Case{-33.868819, 151.209291, "latitude=-33.8688&longitude=151.2093&"}}) {
    tick(c.latitude, c.longitude);
    EXPECT_THAT(http.requests.back().url, testing::HasSubstr(c.items));
    http.answer(Failure{"offline"});
  }
}

TEST_F(WeatherSourceTest, KeepsAnAnswerForTenMinutes) {
  tick();
  EXPECT_FALSE(weather.hasReadings());
  now += 5;
  http.answer(std::string(mildAnswer));
  expectMild();
  EXPECT_TRUE(weather.hasReadings());
  EXPECT_FALSE(weather.inFlight());
  EXPECT_EQ(weather.lastError(), std::nullopt);

  now += 599.9;
  tick();
  tick(51.5, -0.1);
  EXPECT_EQ(http.requests.size(), 1U) << "nor does another place count before";
  now += 0.1;
  tick(51.5, -0.1);
  ASSERT_EQ(http.requests.size(), 2U);
  EXPECT_THAT(http.requests[1].url, testing::HasSubstr("latitude=51.5000&longitude=-0.1000&"));
  expectMild();
}

TEST_F(WeatherSourceTest, AFailureKeepsTheReadingsAndIsTriedAgainWithTheNextTick) {
  tick();
  http.answer(std::string(mildAnswer));
  now += 600;
  const std::vector<std::pair<Result<std::string>, std::string>> failures{
      {Failure{"Connection refused"}, "Connection refused"},
      {std::string("{\"error\": true}"), "Unexpected response"},
      {std::string("[]"), "Unexpected response"},
      {std::string("<html>"), "line 1, column 1: "},
  };
  for (const auto& [answer, error] : failures) {
    const std::size_t before = http.requests.size();
    tick();
    ASSERT_EQ(http.requests.size(), before + 1);
    http.answer(answer);
    EXPECT_FALSE(weather.inFlight());
    EXPECT_THAT(weather.lastError(), testing::Optional(testing::StartsWith(error)));
    expectMild();
  }
  tick();
  EXPECT_TRUE(weather.lastError()) << "it stands until there is an answer";
  http.answer(std::string(R"({"current": {"wind_speed_10m": 3}})"));
  EXPECT_EQ(weather.lastError(), std::nullopt);
  EXPECT_EQ(weather.wind(), 3);
  EXPECT_EQ(weather.temp() + weather.gust() + weather.cloud() + weather.rain(), 0) << "what is missing is 0";
  tick();
  EXPECT_FALSE(weather.inFlight());
}

TEST_F(WeatherSourceTest, APlaceThatIsNoneIsNotAskedFor) {
  const double nan = std::nan("");
  const double infinity = std::numeric_limits<double>::infinity();
  for (const auto& [latitude, longitude] : std::vector<std::pair<double, double>>{
           {nan, 0}, {0, nan}, {infinity, 0}, {0, -infinity}, {90.1, 0}, {0, 180.1}, {-1e300, 1e300}}) {
    tick(latitude, longitude);
    EXPECT_EQ(weather.lastError(), "The location must lie within latitude ±90 and longitude ±180.");
  }
  EXPECT_TRUE(http.requests.empty());
  tick(-90, 180);
  EXPECT_EQ(http.requests.size(), 1U);
}

TEST_F(WeatherSourceTest, AnAnswerThatComesTooLateForTheSourceIsDropped) {
  {
    WeatherSource brief({.http = &http});
    brief.refreshIfStale(0, 0);
  }
  ASSERT_EQ(http.requests.size(), 1U);
  http.answer(std::string(mildAnswer));
}

TEST(WeatherSourceWithoutNetworkTest, StaysSilent) {
  WeatherSource weather({});
  weather.refreshIfStale(0, 0);
  EXPECT_FALSE(weather.inFlight() || weather.lastError());
}

TEST_F(WeatherSourceTest, SaysItInOneLine) {
  struct Case {
    const char* members;
    const char* line;
  };
  for (const Case& c :
       {Case{R"("temperature_2m": 12.3, "wind_speed_10m": 7.5, "wind_gusts_10m": 15.4, "cloud_cover": 75)",
             "12°C · wind 8 mph · gusts 15 mph · cloud 75%"},
        Case{R"("temperature_2m": -0.4, "cloud_cover": 29)", "0°C · wind 0 mph · gusts 0 mph · cloud 29%"},
        Case{R"("temperature_2m": -40.6)", "-41°C · wind 0 mph · gusts 0 mph · cloud 0%"}}) {
    tick();
    http.answer("{\"current\": {" + std::string(c.members) + "}}");
    EXPECT_EQ(weather.readout(), c.line);
    now += 600;
  }
}

TEST(WeatherSourceDiagnosticsTest, OneLineForEachGoodAnswer) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // the switch is read once in a process
  ASSERT_EQ(setenv("NIMBRA_DEBUG", "1", 1), 0);
  EXPECT_EXIT(
      {
        ScriptedFetcher http;
        WeatherSource weather({.http = &http});
        weather.refreshIfStale(0, 0);
        http.answer(Failure{"offline"});
        weather.refreshIfStale(0, 0);
        http.answer(std::string(mildAnswer));
        std::exit(0);
      },
      testing::ExitedWithCode(0), "^\\[nimbra\\] weather temp=12\\.3 wind=8\\.0 gust=15\\.5\n$");
  unsetenv("NIMBRA_DEBUG");
}

TEST(ContinuousTimeTest, GoesForwards) {
  const double before = continuousTime();
  const double since = mediaTime();
  while (mediaTime() - since < 0.01) {
  }
  const double gone = continuousTime() - before;
  EXPECT_GE(gone, 0.0099);
  EXPECT_LT(gone, 60) << "it counts seconds";
}

}  // namespace
}  // namespace veloria
