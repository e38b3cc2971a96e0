#include "CapturedPictures.h"

#import <CoreFoundation/CoreFoundation.h>

namespace veloria {

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

}  // namespace veloria
