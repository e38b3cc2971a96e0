#pragma once

#include <functional>

namespace veloria {

/// Runs `action` on the main thread, later. Whoever owns the main thread has to serve its queue, as an application's
/// event loop does. Any thread.
void postToMainQueue(std::function<void()> action);

}  // namespace veloria
