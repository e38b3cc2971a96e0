#include "gpu/Device.h"

#include <algorithm>
#include <utility>

#include "gpu/Frame.h"
#include "gpu/Surface.h"
#include "gpu/Texture.h"

namespace veloria::gpu {

namespace {

bool inRange(std::uint32_t length) {
  return length >= 1 && length <= maxTextureLength;
}

void requireFunction(const Library& library, const std::string& function) {
  if (!library.contains(function)) throw PreconditionError("the library has no function \"" + function + "\"");
}

void requireReadable(std::span<const Texture* const> textures, const Texture& target) {
  const auto end = std::find(textures.begin(), textures.end(), nullptr);
  require(std::all_of(end, textures.end(), [](const Texture* texture) { return texture == nullptr; }),
          "Frame::run: a texture is missing between others");
  for (const Texture* texture : textures.first(static_cast<std::size_t>(end - textures.begin()))) {
    require(texture != &target, "Frame::run: the pass reads its own target");
    require(contains(texture->descriptor().usage, TextureUsage::shaderRead),
            "Frame::run: a texture was not made to be read");
  }
}

void requireSound(const Pass& pass) {
  requireReadable(pass.textures, pass.target);
  requireReadable(pass.images, pass.target);
  require(pass.bytes.size() <= maxPassBytes, "Frame::run: more than 4096 bytes");
  const TextureUsage usage = pass.target.descriptor().usage;
  if (!pass.pipeline.draws()) {
    require(contains(usage, TextureUsage::shaderWrite), "Frame::run: the target was not made to be written");
    return;
  }
  require(pass.images[0] == nullptr, "Frame::run: a fragment function has no images");
  require(contains(usage, TextureUsage::renderTarget), "Frame::run: the target was not made as a render target");
  require(pass.pipeline.descriptor().format == pass.target.format(),
          "Frame::run: the pipeline was made for another format than the target's");
}

}  // namespace

std::shared_ptr<Texture> Device::makeTexture(const TextureDescriptor& descriptor) {
  require(descriptor.format != PixelFormat::invalid, "Device::makeTexture: the format is invalid");
  require(inRange(descriptor.size.width) && inRange(descriptor.size.height),
          "Device::makeTexture: the size is not 1 to 16384 in each direction");
  require(static_cast<std::uint32_t>(descriptor.usage) >= 1 && static_cast<std::uint32_t>(descriptor.usage) <= 7,
          "Device::makeTexture: the usage has no bit, or one that does not exist");
  return doMakeTexture(descriptor);
}

std::shared_ptr<Pipeline> Device::makePipeline(const Library& library, const PipelineDescriptor& descriptor) {
  requireFunction(library, descriptor.function);
  if (!descriptor.vertexFunction.empty()) {
    requireFunction(library, descriptor.vertexFunction);
    require(descriptor.format != PixelFormat::invalid, "Device::makePipeline: the format is invalid");
  }
  auto& entry = library.pipelines_[descriptor];
  auto pipeline = entry.lock();
  if (pipeline == nullptr) entry = pipeline = doMakePipeline(library, descriptor);
  return pipeline;
}

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

void Frame::requireOpen() const {
  require(newest_ != nullptr && *newest_ == number_, "Frame: it is committed, or the next one is begun");
}

void Frame::run(const Pass& pass) {
  requireOpen();
  require(!presents_, "Frame::run: the drawable is presented already");
  requireSound(pass);
  doRun(pass);
}

void Frame::present(Drawable& drawable) {
  requireOpen();
  require(!presents_, "Frame::present: the frame presents a drawable already");
  if (drawable.onScreen()) doPresent(drawable);
  presents_ = true;
}

void Frame::commit(CompletedHandler handler) {
  requireOpen();
  newest_ = nullptr;
  doCommit(std::move(handler));
}

Frame* FrameQueue::begin(const char* label) {
  Frame* frame = doBegin(label);
  if (frame == nullptr) return nullptr;
  frame->number_ = ++device_.newestFrame_;
  frame->newest_ = &device_.newestFrame_;
  frame->presents_ = false;
  return frame;
}

}  // namespace veloria::gpu
