#include "platform/macos/capture/MacBarCaptureStream.h"

#import <CoreFoundation/CoreFoundation.h>
#import <CoreGraphics/CoreGraphics.h>
#import <CoreMedia/CoreMedia.h>
#import <CoreVideo/CoreVideo.h>
#import <Metal/Metal.h>
#include <unistd.h>

#include <memory>
#include <utility>
#include <vector>

#include "base/Log.h"
#include "gpu/metal/MetalFactory.h"
#include "platform/macos/capture/BarCaptureSettings.h"
#include "platform/macos/sources/ScreenStream.h"
#include "platform/macos/system/MacBasics.h"

namespace veloria {

namespace {

SCDisplay* displayIn(SCShareableContent* content, std::uint32_t wanted) {
  std::vector<std::uint32_t> numbers;
  for (SCDisplay* display in content.displays) numbers.push_back(display.displayID);
  const auto index = displayToCapture(numbers, wanted);
  return index ? content.displays[*index] : nil;
}

OwnContent ownOf(SCShareableContent* content) {
  std::vector<int> applications;
  std::vector<int> owners;
  for (SCRunningApplication* application in content.applications) applications.push_back(application.processID);
  for (SCWindow* window in content.windows) owners.push_back(window.owningApplication.processID);
  return ownContent(applications, owners, ::getpid());
}

NSArray* windowsOf(SCShareableContent* content, const std::vector<std::size_t>& indices) {
  NSMutableArray* windows = [NSMutableArray array];
  for (const std::size_t index : indices) [windows addObject:content.windows[index]];
  return windows;
}

SCContentFilter* filterOf(SCShareableContent* content, SCDisplay* display) {
  const OwnContent own = ownOf(content);
  if (own.application) {
    return [[SCContentFilter alloc] initWithDisplay:display
                              excludingApplications:@[ content.applications[*own.application] ]
                                   exceptingWindows:@[]];
  }
  NimbraLog::debugf("capture: app not listed, falling back to %zu windows", own.windows.size());
  return [[SCContentFilter alloc] initWithDisplay:display excludingWindows:windowsOf(content, own.windows)];
}

SCStreamConfiguration* configurationOf(const BarCaptureSettings& settings) {
  const Rect& rect = settings.sourceRect;
  SCStreamConfiguration* configuration = [SCStreamConfiguration new];
  configuration.sourceRect = CGRectMake(rect.x, rect.y, rect.width, rect.height);
  configuration.width = settings.pictures.width;
  configuration.height = settings.pictures.height;
  configuration.pixelFormat = kCVPixelFormatType_32BGRA;
  configuration.colorSpaceName = kCGColorSpaceSRGB;
  configuration.showsCursor = BarCaptureSettings::showsCursor;
  configuration.queueDepth = BarCaptureSettings::queueDepth;
  configuration.scalesToFit = BarCaptureSettings::scalesToFit;
  configuration.minimumFrameInterval = CMTimeMake(1, BarCaptureSettings::framesPerSecond);
  return configuration;
}

/// How to capture a region of the menu bar without our own windows, of the content that exists now. Main thread.
StreamPlan barStreamPlan(SCShareableContent* content, const BarRegion& region) {
  SCDisplay* display = displayIn(content, region.displayID);
  if (display == nil) return {.problem = noDisplayToCapture};
  const auto settings = barCaptureSettings(region);
  if (!settings) return {.problem = "The menu bar has no size that could be captured."};
  return {.filter = filterOf(content, display), .configuration = configurationOf(*settings), .problem = {}};
}

/// A captured picture and its texture, which share memory. That memory is the stream's, and returns to it when this is
/// destroyed.
class CapturedPicture {
 public:
  /// Owns the reference from now on.
  explicit CapturedPicture(CVMetalTextureRef texture) : texture_(texture) {}
  ~CapturedPicture();
  CapturedPicture(const CapturedPicture&) = delete;
  CapturedPicture& operator=(const CapturedPicture&) = delete;

  id<MTLTexture> texture() const { return CVMetalTextureGetTexture(texture_); }

 private:
  CVMetalTextureRef texture_;
};

/// Makes captured pictures for one device. Any one thread at a time.
class CapturedPictures {
 public:
  explicit CapturedPictures(id<MTLDevice> device);
  ~CapturedPictures();
  CapturedPictures(const CapturedPictures&) = delete;
  CapturedPictures& operator=(const CapturedPictures&) = delete;

  /// Null for a buffer without a picture, and if no texture can be made.
  std::shared_ptr<CapturedPicture> picture(CMSampleBufferRef buffer) const;

 private:
  CVMetalTextureCacheRef cache_ = nullptr;
};

CapturedPicture::~CapturedPicture() {
  CFRelease(texture_);
}

CapturedPictures::CapturedPictures(id<MTLDevice> device) {
  if (CVMetalTextureCacheCreate(nullptr, nullptr, device, nullptr, &cache_) != kCVReturnSuccess) cache_ = nullptr;
}

CapturedPictures::~CapturedPictures() {
  if (cache_ != nullptr) CFRelease(cache_);
}

std::shared_ptr<CapturedPicture> CapturedPictures::picture(CMSampleBufferRef buffer) const {
  if (cache_ == nullptr || !CMSampleBufferIsValid(buffer)) return nullptr;
  const CVImageBufferRef image = CMSampleBufferGetImageBuffer(buffer);
  if (image == nullptr) return nullptr;
  CVMetalTextureRef texture = nullptr;
  const CVReturn status = CVMetalTextureCacheCreateTextureFromImage(
      nullptr, cache_, image, nullptr, MTLPixelFormatBGRA8Unorm, CVPixelBufferGetWidth(image),
      CVPixelBufferGetHeight(image), 0, &texture);
  if (status != kCVReturnSuccess || texture == nullptr) return nullptr;
  return std::make_shared<CapturedPicture>(texture);
}

}  // namespace

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

/// Takes the pictures from the capture's queue to the main thread, where a capture that has ended drops them.
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
