#include "platform/macos/sources/MacDesktopPicture.h"

#import <AppKit/AppKit.h>
#import <CoreGraphics/CoreGraphics.h>
#import <ImageIO/ImageIO.h>
#import <dispatch/dispatch.h>

#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/macos/sources/PictureLimits.h"
#include "platform/macos/system/MacBasics.h"

namespace veloria {

namespace {

constexpr std::size_t side = DesktopPicture::side;

struct Release {
  void operator()(CGImageSourceRef source) const { CFRelease(source); }
  void operator()(CGImageRef image) const { CGImageRelease(image); }
  void operator()(CGColorSpaceRef space) const { CGColorSpaceRelease(space); }
  void operator()(CGContextRef context) const { CGContextRelease(context); }
};

template <typename Ref>
using Owned = std::unique_ptr<std::remove_pointer_t<Ref>, Release>;

Owned<CGImageSourceRef> openPicture(const std::filesystem::path& path) {
  NSURL* url = [NSURL fileURLWithPath:systemText(path.native())];
  NSDictionary* options = @{(__bridge NSString*)kCGImageSourceShouldCache : @NO};
  return Owned<CGImageSourceRef>(CGImageSourceCreateWithURL((__bridge CFURLRef)url, (__bridge CFDictionaryRef)options));
}

double number(NSDictionary* properties, CFStringRef key) {
  id value = properties[(__bridge NSString*)key];
  return [value isKindOfClass:[NSNumber class]] ? [value doubleValue] : 0;
}

bool isPlausible(CGImageSourceRef source) {
  NSDictionary* properties = (__bridge_transfer NSDictionary*)CGImageSourceCopyPropertiesAtIndex(source, 0, nullptr);
  return mayDecode(number(properties, kCGImagePropertyPixelWidth), number(properties, kCGImagePropertyPixelHeight));
}

Owned<CGImageRef> reducedImage(CGImageSourceRef source) {
  NSDictionary* options = @{
    (__bridge NSString*)kCGImageSourceCreateThumbnailFromImageAlways : @YES,
    (__bridge NSString*)kCGImageSourceCreateThumbnailWithTransform : @YES,
    (__bridge NSString*)kCGImageSourceThumbnailMaxPixelSize : @(decodedSide),
    (__bridge NSString*)kCGImageSourceShouldCache : @NO
  };
  return Owned<CGImageRef>(CGImageSourceCreateThumbnailAtIndex(source, 0, (__bridge CFDictionaryRef)options));
}

/// Over black, since the bytes are 0 before, and stretched to a square.
std::optional<DesktopPicture::Pixels> drawn(CGImageRef image) {
  std::vector<std::uint8_t> bytes(side * side * 4);
  const Owned<CGColorSpaceRef> space(CGColorSpaceCreateWithName(kCGColorSpaceSRGB));
  const CGBitmapInfo layout = static_cast<CGBitmapInfo>(kCGImageAlphaPremultipliedLast) | kCGBitmapByteOrder32Big;
  const Owned<CGContextRef> context(CGBitmapContextCreate(bytes.data(), side, side, 8, side * 4, space.get(), layout));
  if (!context) return std::nullopt;
  CGContextSetInterpolationQuality(context.get(), kCGInterpolationHigh);
  CGContextDrawImage(context.get(), CGRectMake(0, 0, side, side), image);
  return thumbnailPixels(bytes);
}

std::optional<DesktopPicture::Pixels> decode(const std::filesystem::path& path) {
  const auto source = openPicture(path);
  if (!source || !isPlausible(source.get())) return std::nullopt;
  const auto image = reducedImage(source.get());
  return image ? drawn(image.get()) : std::nullopt;
}

/// Makes thumbnails of picture files and remembers the last result, a failure too: an unchanged file is not read again.
/// Of a picture with several images (one that follows the day) the first is used. Any one thread at a time; blocks.
class PictureDecoder {
 public:
  std::optional<DesktopPicture::Pixels> thumbnail(const std::filesystem::path& path);

 private:
  std::optional<PictureFileFacts> last_;
  std::optional<DesktopPicture::Pixels> pixels_;
};

std::optional<DesktopPicture::Pixels> PictureDecoder::thumbnail(const std::filesystem::path& path) {
  const auto facts = pictureFileFacts(path);
  if (!facts) return std::nullopt;
  if (last_ == facts) return pixels_;
  @autoreleasepool {
    pixels_ = decode(path);
  }
  last_ = facts;
  return pixels_;
}

constexpr const char* queueLabel = "com.tollmere.Veloria.wallpaper";

dispatch_queue_t makeQueue() {
  dispatch_queue_attr_t quiet = dispatch_queue_attr_make_with_qos_class(DISPATCH_QUEUE_SERIAL, QOS_CLASS_UTILITY, 0);
  return dispatch_queue_create(queueLabel, quiet);
}

NSScreen* screenNumbered(std::uint32_t number) {
  for (NSScreen* screen in [NSScreen screens]) {
    id found = screen.deviceDescription[@"NSScreenNumber"];
    if ([found isKindOfClass:[NSNumber class]] && [found unsignedIntValue] == number) return screen;
  }
  return nil;
}

/// Empty if the desktop's picture is not a file.
std::filesystem::path pictureOf(const Screen& screen) {
  NSScreen* known = screenNumbered(screen.number);
  if (known == nil) return {};
  return plainText([[NSWorkspace sharedWorkspace] desktopImageURLForScreen:known].path);
}

}  // namespace

/// The state of the queue's requests. Outlives the owner while one runs.
struct MacDesktopPicture::Worker {
  dispatch_queue_t queue = makeQueue();
  PictureDecoder decoder;

  Result<Pixels> load(const std::filesystem::path& path) {
    try {
      if (auto pixels = decoder.thumbnail(path)) return *std::move(pixels);
      return Failure{path.native() + ": not a readable picture"};
    } catch (const std::exception& error) {
      return Failure{error.what()};
    }
  }
};

MacDesktopPicture::MacDesktopPicture()
    : worker_(std::make_shared<Worker>()), self_(std::make_shared<MacDesktopPicture*>(this)) {}

MacDesktopPicture::~MacDesktopPicture() = default;

void MacDesktopPicture::thumbnail(const Screen& screen, Answer answer) {
  if (answer_) return;
  answer_ = std::move(answer);
  const std::filesystem::path path = pictureOf(screen);
  if (path.empty()) return finish(Failure{"the system does not say which picture the desktop shows"});
  const auto worker = worker_;
  const std::weak_ptr<MacDesktopPicture*> self = self_;
  dispatch_async(worker->queue, ^{
    auto pixels = worker->load(path);
    postToMainQueue([self, pixels = std::move(pixels)] {
      if (const auto owner = self.lock()) (*owner)->finish(pixels);
    });
  });
}

void MacDesktopPicture::finish(Result<Pixels> pixels) {
  const Answer answer = std::exchange(answer_, nullptr);
  answer(std::move(pixels));
}

}  // namespace veloria
