#include "platform/macos/capture/MacBarCaptureStream.h"

#include <utility>

#include "BarStreamPlan.h"
#include "CapturedPictures.h"
#include "base/Log.h"
#include "gpu/metal/MetalFactory.h"
#include "platform/macos/capture/BarCaptureSettings.h"
#include "platform/macos/mainqueue/MainQueue.h"
#include "platform/macos/stream/ScreenStream.h"

namespace veloria {

/// One capture, from start to stop. Main thread.
struct MacBarCaptureStream::Run {
  gpu::Device* device = nullptr;
  BarCaptureHandlers handlers;
  gpu::Size size;
  VeloriaScreenStream* stream = nil;
  bool started = false;
  bool ended = false;

  void tellStarted() {
    if (ended || std::exchange(started, true)) return;
    handlers.started(size);
  }

  void show(const std::shared_ptr<CapturedPicture>& picture) {
    tellStarted();
    if (ended) return;
    try {
      handlers.texture(gpu::metal::wrapTexture(*device, (__bridge void*)picture->texture(), picture));
    } catch (const gpu::DeviceError& error) {
      NimbraLog::debugf("capture: a picture was dropped: %s", error.what());
    }
  }

  void end() {
    ended = true;
    [stream stop];
  }
};

namespace {

/// The pictures' way from the capture's queue to the main thread, where a capture that has ended drops them.
template <typename Run>
std::function<void(CMSampleBufferRef, SCStreamOutputType)> sampleHandler(const std::shared_ptr<Run>& run) {
  const auto device = (__bridge id<MTLDevice>)gpu::metal::systemDevice(*run->device);
  const auto pictures = std::make_shared<const CapturedPictures>(device);
  return [pictures, weak = std::weak_ptr(run)](CMSampleBufferRef buffer, SCStreamOutputType type) {
    if (type != SCStreamOutputTypeScreen) return;
    const auto picture = pictures->picture(buffer);
    if (!picture) return;
    postToMainQueue([weak, picture] {
      if (const auto live = weak.lock()) live->show(picture);
    });
  };
}

}  // namespace

MacBarCaptureStream::MacBarCaptureStream(std::function<gpu::Device*()> device) : device_(std::move(device)) {}

MacBarCaptureStream::~MacBarCaptureStream() {
  stop();
}

void MacBarCaptureStream::start(const BarRegion& region, BarCaptureHandlers handlers) {
  stop();
  const auto run = std::make_shared<Run>();
  run->device = device_();
  if (run->device == nullptr) return handlers.failed("There is no GPU to capture the menu bar with.");
  run->handlers = std::move(handlers);
  run_ = run;
  StreamRequest request;
  request.queue = dispatch_queue_create(BarCaptureSettings::queueLabel, DISPATCH_QUEUE_SERIAL);
  request.outputs = {SCStreamOutputTypeScreen};
  request.plan = [weak = std::weak_ptr(run), region](SCShareableContent* content) {
    const StreamPlan plan = barStreamPlan(content, region);
    const auto live = weak.lock();
    if (live && plan.filter != nil) live->size = barCaptureSettings(region)->pictures;
    return plan;
  };
  request.sample = sampleHandler(run);
  request.started = [weak = std::weak_ptr(run)] {
    if (const auto live = weak.lock()) live->tellStarted();
  };
  request.failed = [weak = std::weak_ptr(run)](const std::string& reason) {
    const auto live = weak.lock();
    if (!live) return;
    live->ended = true;
    live->handlers.failed(reason);
  };
  run->stream = [[VeloriaScreenStream alloc] initWithRequest:std::move(request)];
  [run->stream start];
}

void MacBarCaptureStream::stop() {
  if (const auto run = std::exchange(run_, nullptr)) run->end();
}

}  // namespace veloria
