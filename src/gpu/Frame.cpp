#include "gpu/Frame.h"

#include <algorithm>
#include <utility>

#include "gpu/Device.h"
#include "gpu/Precondition.h"
#include "gpu/Surface.h"

namespace veloria::gpu {

namespace {

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
