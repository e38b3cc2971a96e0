#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "base/Result.h"

namespace veloria {

/// Port: HTTP requests. Main thread.
class HttpFetcher {
 public:
  /// Receives the body, or why there is none.
  using Done = std::function<void(Result<std::string>)>;

  virtual ~HttpFetcher() = default;
  HttpFetcher(const HttpFetcher&) = delete;
  HttpFetcher& operator=(const HttpFetcher&) = delete;

  /// Returns at once. `done` is called on the main thread exactly once, later than this call, unless the fetcher is
  /// destroyed first, which `done` itself may do. A body of more than `cap` bytes is a failure, and so is one that is
  /// incomplete after `seconds`. The HTTP status does not matter: an error page has a body too. A fetcher may delay a
  /// request that follows another too soon.
  virtual void get(const std::string& url, std::size_t cap, double seconds, Done done) = 0;

 protected:
  HttpFetcher() = default;
};

}  // namespace veloria
