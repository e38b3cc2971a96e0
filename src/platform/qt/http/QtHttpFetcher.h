#pragma once

#include <memory>

#include "ports/HttpFetcher.h"

namespace veloria {

/// Gets over https, and over plain http from this computer (127.0.0.0/8, ::1, localhost) alone. A certificate that is
/// not good is a failure. At most five redirects are followed, never from https to http. No cookies, no cache, no
/// credentials; a compressed body, which is not asked for, is refused. The system's proxies, but not for this computer.
/// Requests are paced as RequestPacing says, and `seconds` count from when one is sent. `cap` counts up to 1 GiB,
/// `seconds` from a millisecond to a day.
///
/// Main thread, with a QCoreApplication that outlives it. The work is done on a thread of its own, so that nothing
/// holds the main thread up but the destructor, which cancels all requests and waits for that thread (a look-up of the
/// system's proxies can't be cancelled).
///
/// What Qt keeps from doing better: an answer's header is not bounded, so over https a server that sends one without
/// end is read until the time is up, over plain http until it stops; and a body in chunks whose connection ends before
/// the last one sometimes counts as whole.
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
