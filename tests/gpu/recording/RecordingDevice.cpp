#include "gpu/recording/RecordingDevice.h"

#include <algorithm>
#include <iterator>

namespace veloria::gpu::recording {

namespace {

class RecordingLibrary final : public Library {
 public:
  explicit RecordingLibrary(const std::set<std::string>& functions) : functions_(functions) {}
  bool contains(const std::string& function) const override { return functions_.contains(function); }

 private:
  std::set<std::string> functions_;
};

class RecordingPipeline final : public Pipeline {
 public:
  explicit RecordingPipeline(const PipelineDescriptor& descriptor) : Pipeline(descriptor) {}
};

class RecordingDrawable final : public Drawable {
 public:
  explicit RecordingDrawable(std::shared_ptr<Texture> texture) : texture_(std::move(texture)) {}
  const Texture& texture() const override { return *texture_; }

 private:
  std::shared_ptr<Texture> texture_;
};

}  // namespace

std::vector<Call> RecordingLog::passes() const {
  std::vector<Call> found;
  std::ranges::copy_if(calls, std::back_inserter(found), [](const Call& call) { return call.kind == CallKind::run; });
  return found;
}

std::size_t RecordingLog::count(CallKind kind) const {
  return static_cast<std::size_t>(std::ranges::count(calls, kind, &Call::kind));
}

void RecordingTexture::doWrite(std::span<const std::byte> rows) {
  std::ranges::copy(rows, bytes_.begin());
  known_ = true;
}

void RecordingTexture::doRead(std::span<std::byte> rows) const {
  if (!known_) {
    throw RecordingError("texture \"" + descriptor().label +
                         "\" was never written, or by a function, which did not run");
  }
  std::ranges::copy(bytes_, rows.begin());
}

RecordingTexture& RecordingFrame::own(const Texture& texture) const {
  // The textures are the device's own; only the interface hands them over as constant.
  auto* found = dynamic_cast<RecordingTexture*>(const_cast<Texture*>(&texture));
  if (found != nullptr && &found->device() == &device_) return *found;
  throw RecordingError("texture \"" + texture.descriptor().label + "\" is another device's");
}

void RecordingFrame::doRun(const Pass& pass) {
  Call call{.kind = CallKind::run, .label = pass.label, .function = pass.pipeline.descriptor().function};
  for (const Texture* texture : pass.textures) {
    if (texture != nullptr) call.textures.push_back(&own(*texture));
  }
  for (const Texture* image : pass.images) {
    if (image != nullptr) call.textures.push_back(&own(*image));
  }
  call.bytes.assign(pass.bytes.begin(), pass.bytes.end());
  call.target = &pass.target;
  call.size = pass.target.size();
  own(pass.target).writtenByFunction();
  device_.log().calls.push_back(std::move(call));
}

void RecordingFrame::doPresent(Drawable& drawable) {
  if (dynamic_cast<RecordingDrawable*>(&drawable) == nullptr) throw RecordingError("a drawable of another device");
  device_.log().calls.push_back({.kind = CallKind::present, .label = {}});
}

void RecordingFrame::doCommit(CompletedHandler handler) {
  handler_ = std::move(handler);
  inFlight_ = true;
  device_.log().calls.push_back({.kind = CallKind::commit, .label = {}});
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
  next_ = (next_ + 1) % frames_.size();
  device_.log().calls.push_back({.kind = CallKind::frame, .label = label});
  return &frame;
}

void RecordingDevice::refuseIf(bool failure, const char* what) const {
  if (lost_) throw DeviceLostError(std::string(what) + ": the device was lost");
  if (failure) throw DeviceError(std::string(what) + " fails because the test wants it to");
}

void RecordingDevice::committed(RecordingFrame& frame) {
  inFlight_.push_back(&frame);
  if (completesAtOnce_ || lost_) completeAll();
  if (lost_) throw DeviceLostError("commit: the device was lost");
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

std::shared_ptr<Texture> RecordingDevice::doMakeTexture(const TextureDescriptor& descriptor) {
  refuseIf(failures_.makeTexture, "makeTexture");
  log_.calls.push_back({.kind = CallKind::makeTexture, .label = descriptor.label, .size = descriptor.size});
  return std::make_shared<RecordingTexture>(*this, descriptor);
}

std::unique_ptr<Pipeline> RecordingDevice::doMakePipeline(const Library&, const PipelineDescriptor& descriptor) {
  refuseIf(failures_.makePipeline, "makePipeline");
  log_.calls.push_back({.kind = CallKind::makePipeline, .label = {}, .function = descriptor.function});
  return std::make_unique<RecordingPipeline>(descriptor);
}

void RecordingSurface::configure(Size size, PixelFormat wanted) {
  size_ = size;
  const bool asWanted = wanted == PixelFormat::rgba16Float || wanted == PixelFormat::invalid;
  format_ = asWanted ? wanted : PixelFormat::bgra8Unorm;
}

Drawable* RecordingSurface::nextDrawable() {
  const bool usable = available_ && !device_.lost() && size_.width > 0 && size_.height > 0;
  if (!usable || format_ == PixelFormat::invalid) return nullptr;
  const bool fits =
      drawable_ != nullptr && drawable_->texture().size() == size_ && drawable_->texture().format() == format_;
  if (!fits) {
    const TextureDescriptor descriptor{format_, size_, TextureUsage::renderTarget, StorageMode::gpuPrivate, "drawable"};
    drawable_ = std::make_unique<RecordingDrawable>(std::make_shared<RecordingTexture>(device_, descriptor));
  }
  return drawable_.get();
}

}  // namespace veloria::gpu::recording
