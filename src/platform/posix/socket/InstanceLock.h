#pragma once

#include <filesystem>
#include <optional>

#include "base/OwnedDescriptor.h"
#include "base/Result.h"

namespace veloria {

/// The right to be this user's one running application, held until it is destroyed or the process ends, however that
/// happens. Any thread.
class InstanceLock {
 public:
  /// Takes the lock of a control socket at `socket` (the file beside it, with ".lock"). The socket's folder is made for
  /// the owner alone; one that belongs to another user or lets others in is refused. Nothing when somebody else holds
  /// it. The error is a text for a person.
  static Result<std::optional<InstanceLock>> take(const std::filesystem::path& socket);

 private:
  explicit InstanceLock(OwnedDescriptor file) : file_(std::move(file)) {}

  OwnedDescriptor file_;
};

}  // namespace veloria
