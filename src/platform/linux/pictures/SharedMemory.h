#pragma once

#include <cstddef>

namespace veloria {

/// Memory that another program can map too, by its descriptor. It can't be shortened, so nobody's reads fail. Starts
/// with zeros.
class SharedMemory {
 public:
  /// None.
  SharedMemory() = default;
  /// Exactly `size` bytes, all there; none if there is not so much, or `size` is 0.
  explicit SharedMemory(std::size_t size);
  ~SharedMemory();
  SharedMemory(SharedMemory&& other) noexcept;
  SharedMemory& operator=(SharedMemory&& other) noexcept;

  explicit operator bool() const { return bytes_ != nullptr; }
  std::byte* bytes() const { return bytes_; }
  std::size_t size() const { return size_; }
  /// Stays this object's own: give away a duplicate.
  int descriptor() const { return descriptor_; }

 private:
  int descriptor_ = -1;
  std::byte* bytes_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace veloria
