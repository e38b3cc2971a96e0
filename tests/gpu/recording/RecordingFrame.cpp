#include "gpu/recording/RecordingFrame.h"

#include <utility>

#include "gpu/recording/RecordingDevice.h"
#include "gpu/recording/RecordingSurface.h"
#include "gpu/recording/RecordingTexture.h"

namespace veloria::gpu::recording {

void RecordingFrame::begin(const char* label, std::uint64_t number) {
  number_ = number;
  Call call;
  call.kind = CallKind::frame;
  call.label = label;
  record(std::move(call));
}

void RecordingFrame::record(Call call) {
  call.frame = number_;
  device_.log().add(std::move(call));
}

RecordingTexture& RecordingFrame::ownTexture(const Texture& texture) const {
  // The textures are the device's own; only the interface hands them over as constant.
  auto* own = dynamic_cast<RecordingTexture*>(const_cast<Texture*>(&texture));
  if (own == nullptr || !own->belongsTo(device_)) {
    throw RecordingError("texture \"" + texture.descriptor().label + "\" is another device's");
  }
  return *own;
}

void RecordingFrame::doRun(const Pass& pass) {
  if (dynamic_cast<const RecordingPipeline*>(&pass.pipeline) == nullptr) {
    throw RecordingError("a pipeline of another device");
  }
  Call call;
  call.kind = CallKind::run;
  call.label = pass.label;
  call.function = pass.pipeline.descriptor().function;
  for (const Texture* texture : pass.textures) {
    if (texture != nullptr) call.textures.push_back(&ownTexture(*texture));
  }
  for (const Texture* image : pass.images) {
    if (image != nullptr) call.textures.push_back(&ownTexture(*image));
  }
  call.bytes.assign(pass.bytes.begin(), pass.bytes.end());
  call.target = &pass.target;
  call.size = pass.target.size();
  ownTexture(pass.target).writtenByFunction();
  record(std::move(call));
}

void RecordingFrame::doPresent(Drawable& drawable) {
  auto* own = dynamic_cast<RecordingDrawable*>(&drawable);
  if (own == nullptr) throw RecordingError("a drawable of another device");
  own->presented();
  Call call;
  call.kind = CallKind::present;
  record(std::move(call));
}

void RecordingFrame::doCommit(CompletedHandler handler) {
  handler_ = std::move(handler);
  Call call;
  call.kind = CallKind::commit;
  record(std::move(call));
  inFlight_ = true;
  device_.committed(*this);
}

void RecordingFrame::complete(const Completion& completion) {
  inFlight_ = false;
  if (const CompletedHandler handler = std::exchange(handler_, nullptr)) handler(completion);
}

RecordingQueue::RecordingQueue(RecordingDevice& device) : FrameQueue(device), device_(device) {
  for (auto& frame : frames_) frame = std::make_unique<RecordingFrame>(device);
}

RecordingQueue::~RecordingQueue() {
  device_.completeAll();
}

Frame* RecordingQueue::doBegin(const char* label) {
  if (device_.lost() || device_.failures().frame) return nullptr;
  RecordingFrame& frame = *frames_[next_];
  if (frame.inFlight()) throw RecordingError("three frames are in flight: a device would wait here");
  frame.begin(label, device_.nextFrameNumber());
  next_ = (next_ + 1) % frames_.size();
  return &frame;
}

}  // namespace veloria::gpu::recording
