#include "gpu/Texture.h"

#include <utility>

#include "gpu/Precondition.h"

namespace veloria::gpu {

Texture::Texture(TextureDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

std::size_t Texture::byteCount() const {
  return bytesPerPixel(format()) * size().width * size().height;
}

void Texture::write(std::span<const std::byte> rows) {
  require(rows.size() == byteCount(), "Texture::write: the bytes are not exactly the texture's");
  doWrite(rows);
}

void Texture::read(std::span<std::byte> rows) const {
  require(rows.size() == byteCount(), "Texture::read: the room for the bytes is not exactly the texture's");
  doRead(rows);
}

}  // namespace veloria::gpu
