#include "gpu/recording/RecordingDevice.h"

#include <memory>
#include <utility>

#include "gpu/recording/RecordingPipeline.h"

namespace veloria::gpu::recording {

RecordingDevice::RecordingDevice(std::set<std::string> functions) : functions_(std::move(functions)) {}

RecordingDevice::~RecordingDevice() {
  completeAll();
}

void RecordingDevice::refuseIf(bool failure, const char* what) const {
  if (lost_) throw DeviceLostError(std::string(what) + ": the device was lost");
  if (failure) throw DeviceError(std::string(what) + " fails because the test wants it to");
}

void RecordingDevice::committed(RecordingCommandBuffer& buffer) {
  inFlight_.push_back(&buffer);
  if (lost_) {
    completeAll();
    throw DeviceLostError("commit: the device was lost");
  }
  if (completesAtOnce_) completeAll();
}

bool RecordingDevice::completeNext() {
  if (inFlight_.empty()) return false;
  RecordingCommandBuffer* buffer = inFlight_.front();
  inFlight_.pop_front();
  Completion completion = completion_;
  completion.failed = completion.failed || lost_;
  buffer->complete(completion);
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

std::unique_ptr<Library> RecordingDevice::doMakeLibrary(std::span<const std::byte> bytes) {
  if (bytes.empty()) throw DeviceError("makeLibrary: no bytes");
  return std::make_unique<RecordingLibrary>(functions_);
}

std::unique_ptr<CommandQueue> RecordingDevice::doMakeCommandQueue() {
  return std::make_unique<RecordingQueue>(*this);
}

std::shared_ptr<Texture> RecordingDevice::doMakeTexture(const TextureDescriptor& descriptor) {
  refuseIf(failures_.makeTexture, "makeTexture");
  auto texture = std::make_shared<RecordingTexture>(*this, descriptor);
  Call call;
  call.kind = CallKind::makeTexture;
  call.label = descriptor.label;
  call.threads = descriptor.size;
  call.format = descriptor.format;
  call.target = texture.get();
  log_.add(std::move(call));
  return texture;
}

std::unique_ptr<ComputePipeline> RecordingDevice::doMakeComputePipeline(const Library&, const std::string& function) {
  Call call;
  call.kind = CallKind::makeComputePipeline;
  call.function = function;
  log_.add(std::move(call));
  return std::make_unique<RecordingComputePipeline>(function);
}

std::unique_ptr<RenderPipeline> RecordingDevice::doMakeRenderPipeline(const Library&,
                                                                      const RenderPipelineDescriptor& descriptor) {
  refuseIf(failures_.makeRenderPipeline, "makeRenderPipeline");
  Call call;
  call.kind = CallKind::makeRenderPipeline;
  call.label = descriptor.label;
  call.function = descriptor.fragmentFunction;
  call.vertexFunction = descriptor.vertexFunction;
  call.format = descriptor.format;
  log_.add(std::move(call));
  return std::make_unique<RecordingRenderPipeline>(descriptor);
}

}  // namespace veloria::gpu::recording
