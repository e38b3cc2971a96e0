#pragma once

#import <CoreMedia/CoreMedia.h>
#import <CoreVideo/CoreVideo.h>
#import <Metal/Metal.h>

#include <memory>

#include "gpu/Texture.h"

namespace veloria {

/// A captured picture and the texture that it is, without a copy. The picture's memory is the stream's: it goes back
/// there when this is gone.
class CapturedPicture {
 public:
  /// Takes over the reference.
  explicit CapturedPicture(CVMetalTextureRef texture) : texture_(texture) {}
  ~CapturedPicture();
  CapturedPicture(const CapturedPicture&) = delete;
  CapturedPicture& operator=(const CapturedPicture&) = delete;

  id<MTLTexture> texture() const { return CVMetalTextureGetTexture(texture_); }

 private:
  CVMetalTextureRef texture_;
};

/// Makes them for one device. Any one thread at a time.
class CapturedPictures {
 public:
  explicit CapturedPictures(id<MTLDevice> device);
  ~CapturedPictures();
  CapturedPictures(const CapturedPictures&) = delete;
  CapturedPictures& operator=(const CapturedPictures&) = delete;

  /// Null for what holds no picture, and when no texture can be made of it.
  std::shared_ptr<CapturedPicture> picture(CMSampleBufferRef buffer) const;

 private:
  CVMetalTextureCacheRef cache_ = nullptr;
};

}  // namespace veloria
