#pragma once

#include <filesystem>
#include <optional>

#include "base/OwnedDescriptor.h"
#include "base/Result.h"

namespace veloria {

/// The lock of this user's one running application, held until it is destroyed or the process ends in any way. Any
/// thread.
class InstanceLock {
 public:
  /// Acquires the lock of a control socket at `socket` (the file beside it, with ".lock"). Makes the socket's folder,
  /// for the owner alone, and closes it to others; a folder of another user is an error. Empty if another process holds
  /// the lock. The error is a text for a person.
  static Result<std::optional<InstanceLock>> acquire(const std::filesystem::path& socket);

 private:
  explicit InstanceLock(OwnedDescriptor file) : file_(std::move(file)) {}

  OwnedDescriptor file_;
};

}  // namespace veloria
