#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "gpu/PictureBuffers.h"
#include "gpu/Texture.h"
#include "gpu/cpu/Call.h"

namespace veloria::gpu::cpu {

class CpuDevice;

/// A texture's memory, kept by whatever may still use it.
class CpuStorage {
 public:
  /// Throws DeviceError when memory runs out.
  explicit CpuStorage(const TextureDescriptor& descriptor);
  /// Over the memory of a picture, which must live as long.
  explicit CpuStorage(const PictureBuffer& picture);

  /// For the function that fills it.
  const Planes& target() const { return planes_; }
  /// For functions that read it. Pixels are unpacked for that.
  const Planes& source();

  void write(std::span<const std::byte> rows);
  void read(std::span<std::byte> rows) const;

 private:
  struct Free {
    void operator()(float* memory) const;
  };
  using Floats = std::unique_ptr<float[], Free>;

  static Floats allocate(std::size_t count);
  void makePlanes(Planes& planes, int channels);
  float& at(const Planes& planes, int channel, std::size_t x, std::size_t y) const;

  PixelFormat format_;
  Size size_;
  Planes planes_;    ///< as functions write it
  Planes unpacked_;  ///< of pixels that are read
  Floats memory_;
  std::unique_ptr<std::uint8_t[]> pixels_;
};

class CpuTexture final : public Texture {
 public:
  CpuTexture(CpuDevice& device, TextureDescriptor descriptor);
  CpuTexture(CpuDevice& device, TextureDescriptor descriptor, const PictureBuffer& picture);

  const std::shared_ptr<CpuStorage>& storage() const { return storage_; }

 private:
  void doWrite(std::span<const std::byte> rows) override;
  void doRead(std::span<std::byte> rows) const override;

  CpuDevice& device_;
  std::shared_ptr<CpuStorage> storage_;
};

}  // namespace veloria::gpu::cpu
