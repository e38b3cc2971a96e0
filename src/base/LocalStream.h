#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

#include "base/OwnedDescriptor.h"
#include "base/Result.h"

namespace veloria {

/// A connection to another program's local socket for a short question. All calls give up at one point in time, so a
/// program that does not answer cannot block for longer. The errors say what that program did, without a subject
/// ("does not answer in time"). Any thread; blocks.
class LocalStream {
 public:
  /// `socket` is connected and made by makeLocalSocket(); `end` is a time of mediaTime().
  LocalStream(OwnedDescriptor socket, double end) : socket_(std::move(socket)), end_(end) {}

  static Result<LocalStream> connect(const std::filesystem::path& path, double end);

  Result<Done> send(std::string_view bytes);
  /// Exactly `count` bytes.
  Result<std::string> receive(std::size_t count);
  /// Everything up to the end of the stream; fails above `most` bytes.
  Result<std::string> receiveAll(std::size_t most);
  /// Everything up to the first line feed, without it; fails above `most` bytes.
  Result<std::string> receiveLine(std::size_t most);

 private:
  bool waitFor(short events) const;
  Result<std::string> receivePart(std::size_t most);

  OwnedDescriptor socket_;
  double end_;
};

}  // namespace veloria
