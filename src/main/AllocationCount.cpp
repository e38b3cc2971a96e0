#include "main/AllocationCount.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::uint64_t allocations = 0;

}  // namespace

namespace veloria {

std::uint64_t allocationsOnThisThread() {
  return allocations;
}

}  // namespace veloria

// The sanitizers bring their own operators, which must stay.
#if !defined(__SANITIZE_ADDRESS__)

void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}

void* operator new[](std::size_t size) {
  return operator new(size);
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete[](void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}

#endif
