#pragma once

#include <functional>
#include <memory>

namespace veloria {

/// Calls back when a descriptor can be read, until the returned object is let go.
using DescriptorWatcher = std::function<std::shared_ptr<void>(int descriptor, std::function<void()> onReadable)>;

}  // namespace veloria
