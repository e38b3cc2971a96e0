#include "render/CaptureSink.h"

#include <utility>

#include "base/Log.h"

namespace veloria {

namespace {

bool fitsTexture(const BarPicture& picture) {
  const gpu::Size size = picture.size;
  if (size.width < 1 || size.height < 1) return false;
  if (size.width > gpu::maxTextureLength || size.height > gpu::maxTextureLength) return false;
  return picture.rows.size() ==
         std::size_t{size.width} * size.height * gpu::bytesPerPixel(gpu::PixelFormat::bgra8Unorm);
}

bool isReadablePicture(const gpu::TextureDescriptor& texture) {
  return texture.format == gpu::PixelFormat::bgra8Unorm && gpu::contains(texture.usage, gpu::TextureUsage::shaderRead);
}

}  // namespace

CaptureSink::CaptureSink(gpu::Device& device) : device_(device) {}

void CaptureSink::publish(const BarPicture& picture) {
  if (!fitsTexture(picture)) return;
  try {
    nextTexture(picture.size).write(picture.rows);
  } catch (const gpu::DeviceError& error) {
    NimbraLog::debugf("capture: a picture was dropped: %s", error.what());
    return;
  }
  box_->store(textures_[next_]);
  next_ = (next_ + 1) % textureCount;
  ++frameCount_;
}

void CaptureSink::publish(std::shared_ptr<gpu::Texture> texture) {
  if (!isReadablePicture(texture->descriptor())) return;
  before_ = box_->stored();
  box_->store(std::move(texture));
  ++frameCount_;
}

gpu::Texture& CaptureSink::nextTexture(gpu::Size size) {
  auto& texture = textures_[next_];
  if (texture && texture->size() == size) return *texture;
  texture = device_.makeTexture({.format = gpu::PixelFormat::bgra8Unorm,
                                 .size = size,
                                 .usage = gpu::TextureUsage::shaderRead,
                                 .storage = gpu::StorageMode::shared,
                                 .label = "menu bar"});
  return *texture;
}

void CaptureSink::clear() {
  box_->store(nullptr);
  textures_ = {};
  before_ = nullptr;
}

}  // namespace veloria
