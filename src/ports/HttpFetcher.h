#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "base/Result.h"

namespace veloria {

/// Gets what is at an address of the web. Main thread.
class HttpFetcher {
 public:
  /// Takes the body, or the reason why there is none.
  using Done = std::function<void(Result<std::string>)>;

  virtual ~HttpFetcher() = default;
  HttpFetcher(const HttpFetcher&) = delete;
  HttpFetcher& operator=(const HttpFetcher&) = delete;

  /// Returns at once. `done` is called on the main thread exactly once, later than this call, unless the fetcher is
  /// destroyed first, which `done` itself may do. A body of more than `cap` bytes is a failure, and so is one that is
  /// not complete `seconds` after it was asked for. The answer's status does not matter: the body of an error page is
  /// a body. A fetcher may wait before it asks when it was called a short while ago.
  virtual void get(const std::string& url, std::size_t cap, double seconds, Done done) = 0;

 protected:
  HttpFetcher() = default;
};

}  // namespace veloria
