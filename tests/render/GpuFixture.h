#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "gpu/Device.h"

namespace veloria::tests {

/// A texture's content as floats: `channels` a texel, rows from the top.
struct Field {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t channels = 0;
  std::vector<float> values;

  Field(std::uint32_t w, std::uint32_t h, std::uint32_t c) : width(w), height(h), channels(c), values(w * h * c) {}
  float& at(std::uint32_t x, std::uint32_t y, std::uint32_t channel = 0) {
    return values[(y * width + x) * channels + channel];
  }
  float at(std::uint32_t x, std::uint32_t y, std::uint32_t channel = 0) const {
    return values[(y * width + x) * channels + channel];
  }
  /// The value at the nearest texel inside.
  float clamped(std::int64_t x, std::int64_t y, std::uint32_t channel = 0) const;
};

/// A real device with the product's shader library, with the validation layer on: any message fails the test.
class GpuFixture : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  std::shared_ptr<gpu::Texture> makeField(gpu::PixelFormat format, std::uint32_t width, std::uint32_t height);
  /// Makes a half-float texture with this content.
  std::shared_ptr<gpu::Texture> upload(const Field& field);
  /// The content of a half-float texture.
  Field download(const gpu::Texture& texture);
  /// Runs one kernel on textures in the order of its bindings, its target last, and waits.
  void runKernel(const std::string& function, std::vector<const gpu::Texture*> textures,
                 std::span<const std::byte> bytes = {});
  /// Runs one frame with the passes of `encode`, and waits.
  void runFrame(const std::function<void(gpu::Frame&)>& encode);

  std::unique_ptr<gpu::Device> device_;
  std::unique_ptr<gpu::Library> library_;
  std::unique_ptr<gpu::FrameQueue> queue_;

 private:
  std::map<std::string, std::shared_ptr<gpu::Pipeline>> pipelines_;
};

/// IEEE 754 binary16, rounded to nearest, ties to even.
std::uint16_t halfFrom(float value);
float floatFrom(std::uint16_t half);

}  // namespace veloria::tests
