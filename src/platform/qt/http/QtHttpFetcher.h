#pragma once

#include <algorithm>
#include <limits>
#include <memory>

#include "ports/HttpFetcher.h"

namespace veloria {

/// Delays requests, so that endless repetition does no harm: the first starts at once, the next ones 1, 2, 4, 8, 16 and
/// then 30 seconds after the start of the one before. A minute without a request resets this. The results of requests
/// do not matter: a caller that succeeded does not ask again soon.
class RequestPacing {
 public:
  static constexpr double shortestGap = 1;
  static constexpr double longestGap = 30;
  static constexpr double memorySeconds = 60;

  /// How many seconds to delay a request that is made at `now` (seconds of a clock that never goes back).
  constexpr double delay(double now) {
    const double since = now - lastStart_;  // below 0 while a request is delayed
    gap_ = since >= memorySeconds ? 0 : std::clamp(gap_ * 2, shortestGap, longestGap);
    const double wait = std::max(gap_ - since, 0.0);
    lastStart_ = now + wait;
    return wait;
  }

 private:
  double gap_ = 0;
  double lastStart_ = -std::numeric_limits<double>::infinity();
};

/// Fetches over https, and over plain http from this computer (127.0.0.0/8, ::1, localhost) only. An invalid
/// certificate is a failure. Follows at most five redirects, never from https to http. No cookies, no cache, no
/// credentials. Refuses a compressed body, which it does not ask for. Uses the system's proxies, but not for this
/// computer. RequestPacing delays requests, and `seconds` count from the sending. `cap` is at most 1 GiB, `seconds` a
/// millisecond to a day.
///
/// Main thread, with a QCoreApplication that outlives it. The work runs on a thread of its own. Only the destructor
/// waits: it cancels all requests and waits for that thread (a look-up of the system's proxies can't be cancelled).
///
/// Limits that come from Qt: the header of an answer is not bounded, so an endless one is read until the time is up
/// over https, and until the server stops over plain http; and a chunked body whose connection ends early sometimes
/// counts as whole.
class QtHttpFetcher final : public HttpFetcher {
 public:
  QtHttpFetcher();
  ~QtHttpFetcher() override;
  void get(const std::string& url, std::size_t cap, double seconds, Done done) override;

 private:
  class Requests;
  std::unique_ptr<Requests> requests_;
};

}  // namespace veloria
