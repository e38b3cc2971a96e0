#pragma once

#include <functional>
#include <memory>

namespace veloria {

/// Calls `onReadable` on the event loop of the calling thread whenever `descriptor` can be read (or is at its end),
/// until what is returned is let go, which `onReadable` itself may do. The descriptor stays the caller's and must be
/// open as long as it is watched. Main thread, with a QCoreApplication.
std::shared_ptr<void> watchDescriptor(int descriptor, std::function<void()> onReadable);

}  // namespace veloria
