#pragma once

#include <cstddef>
#include <span>

#include "gpu/Types.h"

namespace veloria::gpu {

/// A two-dimensional texture with one mip level.
///
/// Ownership: shared. It may be released while submitted work still uses it; the back end keeps the memory until that
/// work is done. Rows are stored top row first; texel (0, 0) is the top left one, as fragment coordinates are. Thread:
/// the one that draws, except for the destructor, which may run anywhere.
class Texture {
 public:
  virtual ~Texture() = default;
  Texture(const Texture&) = delete;
  Texture& operator=(const Texture&) = delete;

  const TextureDescriptor& descriptor() const { return descriptor_; }
  Size size() const { return descriptor_.size; }
  PixelFormat format() const { return descriptor_.format; }

  /// Size of all rows, tightly packed, in bytes.
  std::size_t byteCount() const;

  /// Replaces the whole content with `rows` (exactly byteCount() bytes, tightly packed; free again on return) for
  /// everything committed from now on; what was committed before sees the old content. Must not be called between a
  /// pass that uses the texture and the commit of its frame. May wait for all committed work; with Vulkan, a shared
  /// texture waits for no more than its own last write.
  void write(std::span<const std::byte> rows);

  /// Waits for all committed work, then copies the whole content to `rows` (exactly byteCount() bytes).
  void read(std::span<std::byte> rows) const;

 protected:
  explicit Texture(TextureDescriptor descriptor);

 private:
  virtual void doWrite(std::span<const std::byte> rows) = 0;
  virtual void doRead(std::span<std::byte> rows) const = 0;

  TextureDescriptor descriptor_;
};

}  // namespace veloria::gpu
