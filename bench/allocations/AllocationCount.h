#pragma once

#include <cstdint>

/// A program that asks for these counts gets operators new that count. (The driver's own allocations don't pass through
/// them, or are its affair.) The sanitizers bring their own operators, which stay; then nothing is counted.
namespace veloria {

/// False under a sanitizer.
bool countsAllocations();

/// How often the calling thread has asked for memory.
std::uint64_t allocationsOnThisThread();

/// How often any thread has asked for memory.
std::uint64_t allocationsInProcess();

}  // namespace veloria
