#include "gpu/recording/RecordingDevice.h"

#include <algorithm>

namespace veloria::gpu::recording {

namespace {

struct RecordingLibrary final : Library {
  explicit RecordingLibrary(const std::set<std::string>& names) : functions(names) {}
  bool contains(const std::string& function) const override { return functions.contains(function); }
  std::set<std::string> functions;
};

struct RecordingPipeline final : Pipeline {
  explicit RecordingPipeline(const PipelineDescriptor& descriptor) : Pipeline(descriptor) {}
};

struct RecordingTexture final : Texture {
  explicit RecordingTexture(const TextureDescriptor& descriptor) : Texture(descriptor), bytes(byteCount()) {}
  void doWrite(std::span<const std::byte> rows) override { std::ranges::copy(rows, bytes.begin()); }
  void doRead(std::span<std::byte> rows) const override { std::ranges::copy(bytes, rows.begin()); }
  std::vector<std::byte> bytes;
};

struct RecordingDrawable final : Drawable {
  explicit RecordingDrawable(const TextureDescriptor& descriptor) : content(descriptor) {}
  const Texture& texture() const override { return content; }
  RecordingTexture content;
};

struct RecordingFrame final : Frame {
  explicit RecordingFrame(RecordingDevice& owner) : device(owner) {}
  void doRun(const Pass& pass) override {
    RecordedPass recorded{pass.label, pass.pipeline.descriptor().function, {}, {}, &pass.target, pass.target.size()};
    for (const Texture* texture : pass.textures) recorded.textures.push_back(texture);
    recorded.textures.insert(recorded.textures.end(), pass.images.begin(), pass.images.end());
    std::erase(recorded.textures, nullptr);
    recorded.bytes.assign(pass.bytes.begin(), pass.bytes.end());
    device.log.passes.push_back(std::move(recorded));
  }
  void doPresent(Drawable&) override { ++device.log.presents; }
  void doCommit(CompletedHandler handler) override {
    ++device.log.commits;
    device.inFlight.push_back(std::move(handler));
    if (device.completesAtOnce || device.lost()) device.waitIdle();
    if (device.lost()) throw DeviceLostError("commit: the device was lost");
  }
  RecordingDevice& device;
};

struct RecordingQueue final : FrameQueue {
  explicit RecordingQueue(RecordingDevice& owner) : FrameQueue(owner), device(owner), frame(owner) {}
  void setProfiling(bool) override {}
  Frame* doBegin(const char*) override {
    if (device.lost() || device.failures.frame) return nullptr;
    ++device.log.frames;
    return &frame;
  }
  RecordingDevice& device;
  RecordingFrame frame;
};

}  // namespace

void RecordingDevice::waitIdle() {
  while (!inFlight.empty()) completeNext();
}

std::unique_ptr<Library> RecordingDevice::makeLibrary(std::span<const std::byte>) {
  return std::make_unique<RecordingLibrary>(functions_);
}

std::unique_ptr<FrameQueue> RecordingDevice::makeFrameQueue() {
  return std::make_unique<RecordingQueue>(*this);
}

void RecordingDevice::completeNext() {
  const CompletedHandler handler = std::move(inFlight.front());
  inFlight.pop_front();
  Completion told = completion;
  told.failed = lost_;
  if (handler) handler(told);
}

void RecordingDevice::lose() {
  lost_ = true;
  waitIdle();
}

void RecordingDevice::refuseIf(bool failure, const char* what) const {
  if (lost_) throw DeviceLostError(std::string(what) + ": the device was lost");
  if (failure) throw DeviceError(std::string(what) + " fails because the test wants it to");
}

std::shared_ptr<Texture> RecordingDevice::doMakeTexture(const TextureDescriptor& descriptor) {
  refuseIf(failures.makeTexture, "makeTexture");
  ++log.textures;
  return std::make_shared<RecordingTexture>(descriptor);
}

std::unique_ptr<Pipeline> RecordingDevice::doMakePipeline(const Library&, const PipelineDescriptor& descriptor) {
  refuseIf(failures.makePipeline, "makePipeline");
  ++log.pipelines;
  return std::make_unique<RecordingPipeline>(descriptor);
}

void RecordingSurface::configure(Size size, PixelFormat wanted) {
  size_ = size;
  format_ = wanted;
}

Drawable* RecordingSurface::nextDrawable() {
  if (!available || device_.lost() || size_ == Size{} || format_ == PixelFormat::invalid) return nullptr;
  if (drawable_ == nullptr || drawable_->texture().size() != size_ || drawable_->texture().format() != format_) {
    const TextureDescriptor descriptor{format_, size_, TextureUsage::renderTarget, StorageMode::gpuPrivate, "drawable"};
    drawable_ = std::make_unique<RecordingDrawable>(descriptor);
  }
  return drawable_.get();
}

}  // namespace veloria::gpu::recording
