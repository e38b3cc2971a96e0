#include "PictureDecoder.h"

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>
#import <ImageIO/ImageIO.h>

#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

#include "platform/macos/text/MacText.h"
#include "platform/macos/wallpaper/ThumbnailPixels.h"

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

/// Over black, since the bytes are nothing before, and without its proportions.
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

}  // namespace

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

}  // namespace veloria
