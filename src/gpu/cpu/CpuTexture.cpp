#include "gpu/cpu/CpuTexture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "gpu/cpu/CpuDevice.h"
#include "gpu/cpu/Texels.h"

namespace veloria::gpu::cpu {

namespace {

constexpr std::size_t alignment = 64;

int channelsOf(PixelFormat format) {
  return format == PixelFormat::r16Float ? 1 : format == PixelFormat::rg16Float ? 2 : 4;
}

bool hasBytes(PixelFormat format) {
  return targetKind(format) != TargetKind::light;
}

/// Where a channel of a texel lies among its stored values.
std::size_t place(PixelFormat format, int channel) {
  const bool blueFirst = format == PixelFormat::bgra8Unorm || format == PixelFormat::bgra8UnormSrgb;
  return static_cast<std::size_t>(blueFirst && channel < 3 ? 2 - channel : channel);
}

}  // namespace

void CpuStorage::Free::operator()(float* memory) const {
  std::free(memory);
}

CpuStorage::Floats CpuStorage::allocate(std::size_t count) {
  const std::size_t bytes = (count * sizeof(float) + alignment - 1) / alignment * alignment;
  auto* memory = static_cast<float*>(std::aligned_alloc(alignment, bytes));
  if (memory == nullptr) throw DeviceError("no memory for a texture of " + std::to_string(bytes) + " bytes");
  std::memset(memory, 0, bytes);
  return Floats(memory);
}

void CpuStorage::makePlanes(Planes& planes, int channels) {
  const std::size_t stride = (std::size_t{size_.width} + widestLanes - 1) / widestLanes * widestLanes;
  const std::size_t plane = stride * size_.height;
  memory_ = allocate(widestLanes + plane * static_cast<std::size_t>(channels) + slack);
  planes.width = static_cast<int>(size_.width);
  planes.height = static_cast<int>(size_.height);
  planes.stride = static_cast<int>(stride);
  planes.channels = channels;
  for (int channel = 0; channel < 4; ++channel) {
    planes.channel[channel] =
        memory_.get() + widestLanes + (channel < channels ? plane * static_cast<std::size_t>(channel) : 0);
  }
}

CpuStorage::CpuStorage(const TextureDescriptor& descriptor) : format_(descriptor.format), size_(descriptor.size) {
  // What encodes bytes itself is drawn as light, and encoded when it is read.
  const bool packed =
      targetKind(format_) == TargetKind::encodedBytes && contains(descriptor.usage, TextureUsage::renderTarget);
  if (!packed) {
    makePlanes(planes_, channelsOf(format_));
    return;
  }
  const std::size_t rowBytes = std::size_t{size_.width} * 4;
  pixels_ = std::make_unique<std::uint8_t[]>(rowBytes * size_.height);
  planes_.width = static_cast<int>(size_.width);
  planes_.height = static_cast<int>(size_.height);
  planes_.pixels = pixels_.get();
  planes_.rowBytes = static_cast<int>(rowBytes);
  planes_.blueFirst = format_ == PixelFormat::bgra8Unorm;
}

CpuStorage::CpuStorage(const PictureBuffer& picture) : format_(PixelFormat::bgra8Unorm), size_(picture.size) {
  planes_.width = static_cast<int>(size_.width);
  planes_.height = static_cast<int>(size_.height);
  planes_.pixels = reinterpret_cast<std::uint8_t*>(picture.pixels);
  planes_.rowBytes = static_cast<int>(picture.rowBytes);
  planes_.blueFirst = true;
}

float& CpuStorage::at(const Planes& planes, int channel, std::size_t x, std::size_t y) const {
  return planes.channel[channel][y * static_cast<std::size_t>(planes.stride) + x];
}

const Planes& CpuStorage::source() {
  if (planes_.pixels == nullptr) return planes_;
  if (unpacked_.channels == 0) makePlanes(unpacked_, 4);
  for (std::size_t y = 0; y < size_.height; ++y) {
    const std::uint8_t* row = planes_.pixels + y * static_cast<std::size_t>(planes_.rowBytes);
    for (std::size_t x = 0; x < size_.width; ++x) {
      for (int channel = 0; channel < 4; ++channel) {
        at(unpacked_, channel, x, y) = static_cast<float>(row[4 * x + place(format_, channel)]) / 255.0F;
      }
    }
  }
  return unpacked_;
}

void CpuStorage::write(std::span<const std::byte> rows) {
  const std::byte* from = rows.data();
  if (planes_.pixels != nullptr) {
    const std::size_t length = std::size_t{size_.width} * 4;
    for (std::size_t y = 0; y < size_.height; ++y, from += length) {
      std::memcpy(planes_.pixels + y * static_cast<std::size_t>(planes_.rowBytes), from, length);
    }
    return;
  }
  const bool bytes = hasBytes(format_);
  const auto stored = static_cast<std::size_t>(bytes ? 4 : planes_.channels);
  for (std::size_t y = 0; y < size_.height; ++y) {
    for (std::size_t x = 0; x < size_.width; ++x, from += stored * (bytes ? 1 : 2)) {
      for (int channel = 0; channel < planes_.channels; ++channel) {
        at(planes_, channel, x, y) = bytes ? texels::fromByte(from[place(format_, channel)], format_, channel)
                                           : texels::fromHalf(from + 2 * channel);
      }
    }
  }
}

void CpuStorage::read(std::span<std::byte> rows) const {
  std::byte* to = rows.data();
  if (planes_.pixels != nullptr) {
    const std::size_t length = std::size_t{size_.width} * 4;
    for (std::size_t y = 0; y < size_.height; ++y, to += length) {
      std::memcpy(to, planes_.pixels + y * static_cast<std::size_t>(planes_.rowBytes), length);
    }
    return;
  }
  const bool bytes = hasBytes(format_);
  const auto stored = static_cast<std::size_t>(bytes ? 4 : planes_.channels);
  for (std::size_t y = 0; y < size_.height; ++y) {
    for (std::size_t x = 0; x < size_.width; ++x, to += stored * (bytes ? 1 : 2)) {
      for (int channel = 0; channel < planes_.channels; ++channel) {
        const float value = at(planes_, channel, x, y);
        if (bytes) {
          to[place(format_, channel)] = texels::toByte(value, format_, channel);
        } else {
          texels::toHalf(value, to + 2 * channel);
        }
      }
    }
  }
}

CpuTexture::CpuTexture(CpuDevice& device, TextureDescriptor descriptor)
    : Texture(std::move(descriptor)), device_(device), storage_(std::make_shared<CpuStorage>(this->descriptor())) {}

CpuTexture::CpuTexture(CpuDevice& device, TextureDescriptor descriptor, const PictureBuffer& picture)
    : Texture(std::move(descriptor)), device_(device), storage_(std::make_shared<CpuStorage>(picture)) {}

void CpuTexture::doWrite(std::span<const std::byte> rows) {
  device_.waitIdle();
  storage_->write(rows);
}

void CpuTexture::doRead(std::span<std::byte> rows) const {
  device_.waitIdle();
  storage_->read(rows);
}

}  // namespace veloria::gpu::cpu
