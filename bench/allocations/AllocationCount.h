#pragma once

#include <cstdint>

/// A program that links this counts its calls of operator new; what a driver allocates may not pass through it. The
/// sanitizers bring their own operators; with them nothing is counted.
namespace veloria {

/// False under a sanitizer.
bool countsAllocations();

/// How often the calling thread has asked for memory.
std::uint64_t allocationsOnThisThread();

/// How often any thread has asked for memory.
std::uint64_t allocationsInProcess();

}  // namespace veloria
