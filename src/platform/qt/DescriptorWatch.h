#pragma once

#include <functional>
#include <memory>

namespace veloria {

/// Calls `onReadable` on the event loop of the calling thread whenever `descriptor` can be read (or is at its end),
/// until the returned object is released, which `onReadable` itself may do. The caller owns the descriptor and keeps it
/// open while it is watched. Main thread, with a QCoreApplication.
std::shared_ptr<void> watchDescriptor(int descriptor, std::function<void()> onReadable);

}  // namespace veloria
