#pragma once

#include <cstdint>

namespace veloria {

/// How often the calling thread has asked this program's operator new for memory. (The driver's own allocations don't
/// pass through it on this thread, or are its affair.)
std::uint64_t allocationsOnThisThread();

}  // namespace veloria
