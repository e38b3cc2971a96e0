#include "gpu/recording/RecordingDevice.h"

#include <memory>
#include <utility>

namespace veloria::gpu::recording {

RecordingDevice::RecordingDevice(std::set<std::string> functions) : functions_(std::move(functions)) {}

RecordingDevice::~RecordingDevice() {
  completeAll();
}

void RecordingDevice::refuseIf(bool failure, const char* what) const {
  if (lost_) throw DeviceLostError(std::string(what) + ": the device was lost");
  if (failure) throw DeviceError(std::string(what) + " fails because the test wants it to");
}

void RecordingDevice::committed(RecordingFrame& frame) {
  inFlight_.push_back(&frame);
  if (lost_) {
    completeAll();
    throw DeviceLostError("commit: the device was lost");
  }
  if (completesAtOnce_) completeAll();
}

bool RecordingDevice::completeNext() {
  if (inFlight_.empty()) return false;
  RecordingFrame* frame = inFlight_.front();
  inFlight_.pop_front();
  Completion completion = completion_;
  completion.failed = completion.failed || lost_;
  frame->complete(completion);
  return true;
}

void RecordingDevice::completeAll() {
  while (completeNext()) {
  }
}

void RecordingDevice::lose() {
  lost_ = true;
  completeAll();
}

std::unique_ptr<Library> RecordingDevice::makeLibrary(std::span<const std::byte> bytes) {
  if (bytes.empty()) throw DeviceError("makeLibrary: no bytes");
  return std::make_unique<RecordingLibrary>(functions_);
}

std::unique_ptr<FrameQueue> RecordingDevice::makeFrameQueue() {
  return std::make_unique<RecordingQueue>(*this);
}

std::shared_ptr<Texture> RecordingDevice::doMakeTexture(const TextureDescriptor& descriptor) {
  refuseIf(failures_.makeTexture, "makeTexture");
  auto texture = std::make_shared<RecordingTexture>(*this, descriptor);
  Call call;
  call.kind = CallKind::makeTexture;
  call.label = descriptor.label;
  call.size = descriptor.size;
  call.target = texture.get();
  log_.add(std::move(call));
  return texture;
}

std::unique_ptr<Pipeline> RecordingDevice::doMakePipeline(const Library&, const PipelineDescriptor& descriptor) {
  refuseIf(failures_.makePipeline, "makePipeline");
  Call call;
  call.kind = CallKind::makePipeline;
  call.function = descriptor.function;
  log_.add(std::move(call));
  return std::make_unique<RecordingPipeline>(descriptor);
}

}  // namespace veloria::gpu::recording
