#include "gpu/recording/RecordingCommandBuffer.h"

#include <algorithm>
#include <utility>

#include "gpu/recording/RecordingDevice.h"
#include "gpu/recording/RecordingPipeline.h"
#include "gpu/recording/RecordingSurface.h"
#include "gpu/recording/RecordingTexture.h"

namespace veloria::gpu::recording {

namespace {

void bindAt(std::vector<BoundTexture>& textures, const Texture& texture, std::uint32_t index) {
  const auto place =
      std::find_if(textures.begin(), textures.end(), [&](const BoundTexture& bound) { return bound.index >= index; });
  const BoundTexture bound{index, &texture, texture.descriptor().label};
  if (place != textures.end() && place->index == index) {
    *place = bound;
  } else {
    textures.insert(place, bound);
  }
}

Call startOfEncoder(CallKind kind, std::string_view label) {
  Call call;
  call.kind = kind;
  call.label = label;
  return call;
}

}  // namespace

void RecordingComputeEncoder::begin(std::string_view label) {
  reopen();
  state_ = startOfEncoder(CallKind::dispatch, label);
}

void RecordingComputeEncoder::doSetPipeline(const ComputePipeline& pipeline) {
  if (dynamic_cast<const RecordingComputePipeline*>(&pipeline) == nullptr) {
    throw RecordingError("a compute pipeline of another device");
  }
  state_.function = pipeline.function();
}

void RecordingComputeEncoder::doSetTexture(const Texture& texture, std::uint32_t index) {
  bindAt(state_.textures, buffer_.ownTexture(texture), index);
}

void RecordingComputeEncoder::doSetBytes(std::span<const std::byte> bytes) {
  state_.bytes.assign(bytes.begin(), bytes.end());
}

void RecordingComputeEncoder::doDispatch(std::uint32_t width, std::uint32_t height) {
  state_.threads = {width, height};
  buffer_.record(state_);
  for (const BoundTexture& bound : state_.textures) {
    RecordingTexture& texture = buffer_.ownTexture(*bound.texture);
    if (contains(texture.descriptor().usage, TextureUsage::shaderWrite)) texture.writtenByFunction();
  }
}

void RecordingComputeEncoder::doEnd() {
  buffer_.encoderEnded(state_.label);
}

void RecordingRenderEncoder::begin(const Texture& target, std::string_view label) {
  reopen(target);
  state_ = startOfEncoder(CallKind::draw, label);
  state_.target = &target;
  buffer_.ownTexture(target).clear();
}

void RecordingRenderEncoder::doSetPipeline(const RenderPipeline& pipeline) {
  if (dynamic_cast<const RecordingRenderPipeline*>(&pipeline) == nullptr) {
    throw RecordingError("a render pipeline of another device");
  }
  state_.function = pipeline.descriptor().fragmentFunction;
  state_.vertexFunction = pipeline.descriptor().vertexFunction;
  state_.format = pipeline.descriptor().format;
}

void RecordingRenderEncoder::doSetTexture(const Texture& texture, std::uint32_t index) {
  bindAt(state_.textures, buffer_.ownTexture(texture), index);
}

void RecordingRenderEncoder::doSetBytes(std::span<const std::byte> bytes) {
  state_.bytes.assign(bytes.begin(), bytes.end());
}

void RecordingRenderEncoder::doDraw(std::uint32_t vertexCount) {
  state_.vertexCount = vertexCount;
  buffer_.record(state_);
  buffer_.ownTexture(*state_.target).writtenByFunction();
}

void RecordingRenderEncoder::doEnd() {
  buffer_.encoderEnded(state_.label);
}

RecordingCommandBuffer::RecordingCommandBuffer(RecordingDevice& device)
    : device_(device), computeEncoder_(*this), renderEncoder_(*this) {}

void RecordingCommandBuffer::begin(std::uint64_t number) {
  number_ = number;
  label_.clear();
  recording_ = true;
  encoderOpen_ = false;
  Call call;
  call.kind = CallKind::commandBuffer;
  record(std::move(call));
  reopen();
}

void RecordingCommandBuffer::record(Call call) {
  call.buffer = number_;
  device_.log().add(std::move(call));
}

RecordingTexture& RecordingCommandBuffer::ownTexture(const Texture& texture) const {
  // The textures are the device's own; only the interface hands them over as constant.
  auto* own = dynamic_cast<RecordingTexture*>(const_cast<Texture*>(&texture));
  if (own == nullptr || !own->belongsTo(device_)) {
    throw RecordingError("texture \"" + texture.descriptor().label + "\" is another device's");
  }
  return *own;
}

void RecordingCommandBuffer::doSetLabel(std::string_view label) {
  label_ = label;
  record(startOfEncoder(CallKind::setLabel, label));
}

void RecordingCommandBuffer::doAddCompletedHandler(CompletedHandler handler) {
  handlers_.push_back(std::move(handler));
  record(startOfEncoder(CallKind::addCompletedHandler, label_));
}

ComputeEncoder* RecordingCommandBuffer::doComputeEncoder(std::string_view label) {
  if (device_.lost()) return nullptr;
  record(startOfEncoder(CallKind::computeEncoder, label));
  encoderOpen_ = true;
  computeEncoder_.begin(label);
  return &computeEncoder_;
}

RenderEncoder* RecordingCommandBuffer::doRenderEncoder(const Texture& target, std::string_view label) {
  if (device_.lost()) return nullptr;
  Call call = startOfEncoder(CallKind::renderEncoder, label);
  call.target = &target;
  record(std::move(call));
  renderEncoder_.begin(target, label);
  encoderOpen_ = true;
  return &renderEncoder_;
}

void RecordingCommandBuffer::encoderEnded(const std::string& label) {
  encoderOpen_ = false;
  record(startOfEncoder(CallKind::endEncoding, label));
}

void RecordingCommandBuffer::doPresent(Drawable& drawable) {
  auto* own = dynamic_cast<RecordingDrawable*>(&drawable);
  if (own == nullptr) throw RecordingError("a drawable of another device");
  own->presented();
  Call call = startOfEncoder(CallKind::present, label_);
  call.drawable = &drawable;
  record(std::move(call));
}

void RecordingCommandBuffer::doCommit() {
  record(startOfEncoder(CallKind::commit, label_));
  recording_ = false;
  inFlight_ = true;
  device_.committed(*this);
}

void RecordingCommandBuffer::doWait() {
  record(startOfEncoder(CallKind::wait, label_));
  device_.completeAll();
}

void RecordingCommandBuffer::doDiscard() {
  record(startOfEncoder(CallKind::discard, label_));
  recording_ = false;
  encoderOpen_ = false;
  handlers_.clear();
}

void RecordingCommandBuffer::complete(const Completion& completion) {
  inFlight_ = false;
  const std::vector<CompletedHandler> handlers = std::exchange(handlers_, {});
  for (const CompletedHandler& handler : handlers) handler(completion);
}

}  // namespace veloria::gpu::recording
