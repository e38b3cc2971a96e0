#pragma once

#include <functional>
#include <memory>

namespace veloria {

/// Calls `onReadable` whenever the descriptor can be read, until the returned object is destroyed.
using DescriptorWatcher = std::function<std::shared_ptr<void>(int descriptor, std::function<void()> onReadable)>;

}  // namespace veloria
