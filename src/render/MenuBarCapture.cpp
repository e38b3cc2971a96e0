#include "render/MenuBarCapture.h"

#include <nlohmann/json.hpp>
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
  previous_ = box_->stored();
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
  previous_ = nullptr;
}

MenuBarCapture::MenuBarCapture(gpu::Device& device, BarCaptureStream& stream) : stream_(stream), sink_(device) {}

MenuBarCapture::~MenuBarCapture() {
  stop();
}

void MenuBarCapture::start(std::uint32_t displayID, const Rect& rect, double scale) {
  const BarRegion wanted{displayID, rect, scale};
  if (isRunning_ && wanted == current_) return;
  stop();
  current_ = wanted;
  isRunning_ = true;
  stream_.start(wanted, {.started = [this](gpu::Size size) { started(size); },
                         .picture = [this](const BarPicture& picture) { sink_.publish(picture); },
                         .texture = [this](auto texture) { sink_.publish(std::move(texture)); },
                         .failed = [this](const std::string& message) { fail(message); }});
}

void MenuBarCapture::stop() {
  isRunning_ = false;
  stream_.stop();
  sink_.clear();
}

void MenuBarCapture::started(gpu::Size size) {
  lastError_.reset();
  if (!NimbraLog::enabled()) return;
  const auto text = [](double value) { return nlohmann::json(value).dump(); };
  const Rect& rect = current_.rect;
  NimbraLog::debug("capture started rect=(" + text(rect.x) + ", " + text(rect.y) + ", " + text(rect.width) + ", " +
                   text(rect.height) + ") " + std::to_string(size.width) + "x" + std::to_string(size.height));
}

// An outdated picture would leave the shapes of old text in the light.
void MenuBarCapture::fail(const std::string& message) {
  lastError_ = message;
  isRunning_ = false;
  sink_.clear();
  NimbraLog::debug("capture failed: " + message);
}

}  // namespace veloria
