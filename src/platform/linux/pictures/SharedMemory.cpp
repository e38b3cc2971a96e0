#include "platform/linux/pictures/SharedMemory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <utility>

namespace veloria {

SharedMemory::SharedMemory(std::size_t size) {
  if (size == 0) return;
  descriptor_ = ::memfd_create("veloria", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  // Memory that is only promised would end the program when it is written to.
  if (descriptor_ < 0 || ::posix_fallocate(descriptor_, 0, static_cast<off_t>(size)) != 0) return;
  if (::fcntl(descriptor_, F_ADD_SEALS, F_SEAL_SHRINK) != 0) return;
  void* memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_, 0);
  if (memory == MAP_FAILED) return;
  bytes_ = static_cast<std::byte*>(memory);
  size_ = size;
}

SharedMemory::~SharedMemory() {
  if (bytes_ != nullptr) ::munmap(bytes_, size_);
  if (descriptor_ >= 0) ::close(descriptor_);
}

SharedMemory::SharedMemory(SharedMemory&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)),
      bytes_(std::exchange(other.bytes_, nullptr)),
      size_(std::exchange(other.size_, 0)) {}

SharedMemory& SharedMemory::operator=(SharedMemory&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  std::swap(bytes_, other.bytes_);
  std::swap(size_, other.size_);
  return *this;
}

}  // namespace veloria
