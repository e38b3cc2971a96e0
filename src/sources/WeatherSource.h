#pragma once

#include <memory>
#include <optional>
#include <string>

#include "base/MediaClock.h"
#include "base/Result.h"
#include "ports/HttpFetcher.h"
#include "sources/WeatherReadings.h"

namespace veloria {

/// Where the Open-Meteo forecast service is.
inline constexpr const char* forecastServiceUrl = "https://api.open-meteo.com";

/// The weather of now at the configured place, asked for at most once in ten minutes while it is answered, and kept
/// until there is a newer one. Main thread.
class WeatherSource {
 public:
  /// How long an answer is good for.
  static constexpr double staleSeconds = 600;
  /// How long an answer is waited for.
  static constexpr double patienceSeconds = 30;

  struct Ports {
    /// Null: nothing is ever asked for. Outlives the source, or ends with its requests unanswered.
    HttpFetcher* http = nullptr;
    /// For the age of the last answer. The default counts a suspended system's time: after a night's sleep the weather
    /// is stale.
    MediaClock clock = continuousTime;
    /// The service's address without the path "/v1/forecast"; no slash at its end, no query.
    std::string baseUrl = forecastServiceUrl;
  };

  explicit WeatherSource(Ports ports);
  WeatherSource(const WeatherSource&) = delete;
  WeatherSource& operator=(const WeatherSource&) = delete;

  /// For each tick of the modes that need the weather; in degrees, north and east positive. Asks for it unless the last
  /// good answer is younger than ten minutes or a request is under way, so another place counts from the next request
  /// on, and a request that failed is followed by a new one with the next call: the fetcher sees to it that this is no
  /// storm. Coordinates that are none on this globe (or not finite) are not asked for and become the last error.
  /// Returns at once; allocates nothing when no request is due.
  void refreshIfStale(double latitude, double longitude);

  /// The last good readings, 0 before the first: see WeatherReadings.
  double temp() const { return readings_.temp; }
  double wind() const { return readings_.wind; }
  double gust() const { return readings_.gust; }
  double cloud() const { return readings_.cloud; }
  double rain() const { return readings_.rain; }

  /// Why the last request failed; nothing after one that succeeded.
  const std::optional<std::string>& lastError() const { return lastError_; }
  /// There was a good answer.
  bool hasReadings() const { return lastSuccess_.has_value(); }
  /// A request is under way.
  bool inFlight() const { return inFlight_; }

  /// The readings in one line for people: "12°C · wind 8 mph · gusts 15 mph · cloud 75%".
  std::string readout() const;

 private:
  bool fresh() const;
  void request(double latitude, double longitude);
  void finish(const Result<std::string>& answer);
  void take(const WeatherReadings& readings);

  Ports ports_;
  WeatherReadings readings_;
  std::optional<double> lastSuccess_;
  std::optional<std::string> lastError_;
  bool inFlight_ = false;
  std::shared_ptr<bool> life_ = std::make_shared<bool>(true);  ///< requests look whether it is still there
};

}  // namespace veloria
