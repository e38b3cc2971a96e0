#include "gpu/Types.h"

namespace veloria::gpu {

std::size_t bytesPerPixel(PixelFormat format) {
  switch (format) {
    case PixelFormat::r16Float:
      return 2;
    case PixelFormat::rg16Float:
    case PixelFormat::rgba8Unorm:
    case PixelFormat::bgra8Unorm:
    case PixelFormat::bgra8UnormSrgb:
      return 4;
    case PixelFormat::rgba16Float:
      return 8;
    case PixelFormat::invalid:
      break;
  }
  return 0;
}

TargetKind targetKind(PixelFormat format) {
  switch (format) {
    case PixelFormat::rgba8Unorm:
    case PixelFormat::bgra8Unorm:
      return TargetKind::encodedBytes;
    case PixelFormat::bgra8UnormSrgb:
      return TargetKind::encodingBytes;
    default:
      return TargetKind::light;
  }
}

const char* pixelFormatName(PixelFormat format) {
  switch (format) {
    case PixelFormat::r16Float:
      return "r16Float";
    case PixelFormat::rg16Float:
      return "rg16Float";
    case PixelFormat::rgba8Unorm:
      return "rgba8Unorm";
    case PixelFormat::bgra8Unorm:
      return "bgra8Unorm";
    case PixelFormat::bgra8UnormSrgb:
      return "bgra8UnormSrgb";
    case PixelFormat::rgba16Float:
      return "rgba16Float";
    case PixelFormat::invalid:
      break;
  }
  return "invalid";
}

}  // namespace veloria::gpu
