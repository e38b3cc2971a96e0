#include "AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define VELORIA_COUNTS_ALLOCATIONS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELORIA_COUNTS_ALLOCATIONS 0
#endif
#endif
#ifndef VELORIA_COUNTS_ALLOCATIONS
#define VELORIA_COUNTS_ALLOCATIONS 1
#endif

namespace {

thread_local std::uint64_t onThisThread = 0;
std::atomic<std::uint64_t> inProcess{0};

}  // namespace

namespace veloria {

bool countsAllocations() {
  return VELORIA_COUNTS_ALLOCATIONS != 0;
}

std::uint64_t allocationsOnThisThread() {
  return onThisThread;
}

std::uint64_t allocationsInProcess() {
  return inProcess;
}

}  // namespace veloria

#if VELORIA_COUNTS_ALLOCATIONS

void* operator new(std::size_t size) {
  ++onThisThread;
  inProcess.fetch_add(1, std::memory_order_relaxed);
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
