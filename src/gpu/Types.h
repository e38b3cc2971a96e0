#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace veloria::gpu {

/// Pixel formats. The numbers appear in diagnostics and are the same on every back end.
enum class PixelFormat : std::uint32_t {
  invalid = 0,
  r16Float = 25,
  rg16Float = 65,
  rgba8Unorm = 70,
  bgra8Unorm = 80,
  bgra8UnormSrgb = 81,
  rgba16Float = 115,
};

/// Bytes of one pixel; 0 for `invalid`.
std::size_t bytesPerPixel(PixelFormat format);

/// The format's name, for messages ("rgba16Float").
const char* pixelFormatName(PixelFormat format);

/// How a target keeps the light that a fragment function gives it. Fragment functions can read it as specialisation
/// constant 2.
enum class TargetKind : std::uint32_t {
  light = 0,         ///< floating point: as it is
  encodedBytes = 1,  ///< 8 bits, as they are: the function encodes sRGB itself
  encodingBytes =
      2  ///< 8 bits that the target encodes as sRGB: the function gives light, and the target keeps 8 bits of it
};

TargetKind targetKind(PixelFormat format);

/// A size in pixels.
struct Size {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  bool operator==(const Size&) const = default;
};

/// The largest width and height of a texture and of a grid.
inline constexpr std::uint32_t maxTextureLength = 16384;

/// What a texture may be used for; a set of bits.
enum class TextureUsage : std::uint32_t { shaderRead = 1, shaderWrite = 2, renderTarget = 4 };
constexpr TextureUsage operator|(TextureUsage a, TextureUsage b) {
  return static_cast<TextureUsage>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}
constexpr bool contains(TextureUsage set, TextureUsage bit) {
  return (static_cast<std::uint32_t>(set) & static_cast<std::uint32_t>(bit)) != 0;
}

/// Where a texture lives. `Texture::read` and `write` work on both; a private texture is copied on the way.
enum class StorageMode : std::uint8_t { gpuPrivate, shared };

struct TextureDescriptor {
  PixelFormat format = PixelFormat::invalid;
  Size size;  ///< 1 to 16384 in each direction
  TextureUsage usage = TextureUsage::shaderRead;
  StorageMode storage = StorageMode::gpuPrivate;
  std::string label;  ///< for debuggers and messages
};

/// A caller broke the contract of this interface: a programming error, found before it reaches a back end.
class PreconditionError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// Throws PreconditionError with `text` unless `holds`. A check that holds costs nothing but the comparison.
inline void require(bool holds, const char* text) {
  if (!holds) throw PreconditionError(text);
}

/// The GPU or its driver refused something; the text says what was asked and what came back.
class DeviceError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The device is gone (reset, unplugged, driver crash). Everything made from it is dead; make a new one.
class DeviceLostError : public DeviceError {
 public:
  using DeviceError::DeviceError;
};

/// No usable GPU, or none that matches the request.
class NoDeviceError : public DeviceError {
 public:
  using DeviceError::DeviceError;
};

}  // namespace veloria::gpu
