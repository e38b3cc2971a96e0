#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/MediaClock.h"
#include "base/Result.h"
#include "ports/HttpFetcher.h"

namespace veloria {

/// The weather at one place. All values are finite.
struct WeatherReadings {
  double temp = 0;   ///< air temperature in degrees Celsius, -1000 to 1000
  double wind = 0;   ///< wind speed 10 m above the ground in miles per hour, -1000 to 1000
  double gust = 0;   ///< speed of the gusts, in the same unit and range
  double cloud = 0;  ///< the fraction of the sky that is covered, 0 to 1
  double rain = 0;   ///< precipitation, 0 to 1, which is 5 mm or more
  bool operator==(const WeatherReadings&) const = default;
};

/// Reads an answer of the forecast service, from bytes of any origin: the object "current" in a JSON object, in it the
/// numbers "temperature_2m", "wind_speed_10m", "wind_gusts_10m", "cloud_cover" (percent) and "precipitation"
/// (millimetres). One that is missing or not a number counts as 0; others are clamped to their range. The error is that
/// of parseStrictJson() if the body is not JSON, else "Unexpected response". Any thread.
Result<WeatherReadings> readWeather(std::string_view body);

/// The address of the Open-Meteo forecast service.
inline constexpr const char* forecastServiceUrl = "https://api.open-meteo.com";

/// The current weather at the configured place, fetched at most once in ten minutes while requests succeed, and kept
/// until there is a newer answer. Main thread.
class WeatherSource {
 public:
  /// The age at which an answer is stale.
  static constexpr double staleSeconds = 600;
  /// The time limit of a request.
  static constexpr double patienceSeconds = 30;

  struct Ports {
    /// Null: nothing is fetched. Outlives the source, or ends without answering its requests.
    HttpFetcher* http = nullptr;
    /// For the age of the last answer. The default runs on while the system is suspended, so the weather is stale
    /// after a night's sleep.
    MediaClock clock = continuousTime;
    /// The service's address without the path "/v1/forecast"; no slash at its end, no query.
    std::string baseUrl = forecastServiceUrl;
  };

  explicit WeatherSource(Ports ports);
  WeatherSource(const WeatherSource&) = delete;
  WeatherSource& operator=(const WeatherSource&) = delete;

  /// Call this on each tick of a mode that needs the weather; in degrees, north and east positive. Sends a request
  /// unless the last good answer is younger than ten minutes or a request is active. So a new place counts from the
  /// next request, and a failed request is repeated with the next call, at the pace of the fetcher. Coordinates out of
  /// range (or not finite) become the last error and are not sent. Returns at once; allocates only if a request is due.
  void refreshIfStale(double latitude, double longitude);

  /// The last good readings, 0 before the first; see WeatherReadings.
  double temp() const { return readings_.temp; }
  double wind() const { return readings_.wind; }
  double gust() const { return readings_.gust; }
  double cloud() const { return readings_.cloud; }
  double rain() const { return readings_.rain; }

  /// Why the last request failed; empty after one that succeeded.
  const std::optional<std::string>& lastError() const { return lastError_; }
  /// There was a good answer.
  bool hasReadings() const { return lastSuccess_.has_value(); }
  /// A request is active.
  bool inFlight() const { return inFlight_; }

  /// The readings in one line for people: "12°C · wind 8 mph · gusts 15 mph · cloud 75%".
  std::string readout() const;

 private:
  bool fresh() const;
  void request(double latitude, double longitude);
  void finish(const Result<std::string>& answer);
  void accept(const WeatherReadings& readings);

  Ports ports_;
  WeatherReadings readings_;
  std::optional<double> lastSuccess_;
  std::optional<std::string> lastError_;
  bool inFlight_ = false;
  std::shared_ptr<bool> life_ = std::make_shared<bool>(true);  ///< a request checks that it still exists
};

}  // namespace veloria
