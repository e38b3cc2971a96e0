#include "GpuFixture.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <filesystem>

#include "app/ShaderLibrary.h"
#include "gpu/vulkan/VulkanFactory.h"

namespace veloria::tests {

namespace {

std::uint32_t channelsOf(gpu::PixelFormat format) {
  return static_cast<std::uint32_t>(gpu::bytesPerPixel(format) / 2);
}

gpu::PixelFormat halfFormat(std::uint32_t channels) {
  switch (channels) {
    case 1:
      return gpu::PixelFormat::r16Float;
    case 2:
      return gpu::PixelFormat::rg16Float;
    default:
      return gpu::PixelFormat::rgba16Float;
  }
}

}  // namespace

std::uint16_t halfFrom(float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value);
  const auto sign = static_cast<std::uint16_t>((bits >> 16) & 0x8000U);
  const float size = std::fabs(value);
  if (size == 0) return sign;
  if (std::isnan(value)) return static_cast<std::uint16_t>(sign | 0x7e00U);
  if (size >= 65520.0F) return static_cast<std::uint16_t>(sign | 0x7c00U);
  int exponent = 0;
  std::frexp(size, &exponent);
  const int step = std::max(exponent, -13) - 11;  // a half has 11 bits, the smallest of them 2^-24
  const auto units = static_cast<std::uint32_t>(std::nearbyint(std::ldexp(size, -step)));
  const std::uint32_t biased = static_cast<std::uint32_t>(step + 24) << 10;
  return static_cast<std::uint16_t>(sign | (biased + units));
}

float floatFrom(std::uint16_t half) {
  const int exponent = (half >> 10) & 31;
  const int mantissa = half & 1023;
  float value = 0;
  if (exponent == 31) {
    value = mantissa == 0 ? INFINITY : NAN;
  } else if (exponent == 0) {
    value = std::ldexp(static_cast<float>(mantissa), -24);
  } else {
    value = std::ldexp(static_cast<float>(mantissa + 1024), exponent - 25);
  }
  return (half & 0x8000) != 0 ? -value : value;
}

float Field::clamped(std::int64_t x, std::int64_t y, std::uint32_t channel) const {
  return at(static_cast<std::uint32_t>(std::clamp<std::int64_t>(x, 0, width - 1)),
            static_cast<std::uint32_t>(std::clamp<std::int64_t>(y, 0, height - 1)), channel);
}

void GpuFixture::SetUp() {
  gpu::vulkan::VulkanOptions options;
  options.validation = true;
  options.validationHandler = [](std::string_view text) { ADD_FAILURE() << "validation: " << text; };
  device_ = gpu::vulkan::makeVulkanDevice(options);
  library_ = loadShaderLibrary(*device_, {std::filesystem::path(VELORIA_SHADER_LIBRARY)});
  queue_ = device_->makeFrameQueue();
}

void GpuFixture::TearDown() {
  pipelines_.clear();
  queue_.reset();
  library_.reset();
  device_.reset();
}

std::shared_ptr<gpu::Texture> GpuFixture::makeField(gpu::PixelFormat format, std::uint32_t width,
                                                    std::uint32_t height) {
  return device_->makeTexture({.format = format,
                               .size = {width, height},
                               .usage = gpu::TextureUsage::shaderRead | gpu::TextureUsage::shaderWrite,
                               .storage = gpu::StorageMode::shared,
                               .label = "field"});
}

std::shared_ptr<gpu::Texture> GpuFixture::upload(const Field& field) {
  auto texture = makeField(halfFormat(field.channels), field.width, field.height);
  std::vector<std::uint16_t> halves(field.values.size());
  std::transform(field.values.begin(), field.values.end(), halves.begin(), halfFrom);
  texture->write(std::as_bytes(std::span(halves)));
  return texture;
}

Field GpuFixture::download(const gpu::Texture& texture) {
  Field field(texture.size().width, texture.size().height, channelsOf(texture.format()));
  std::vector<std::uint16_t> halves(field.values.size());
  texture.read(std::as_writable_bytes(std::span(halves)));
  std::transform(halves.begin(), halves.end(), field.values.begin(), floatFrom);
  return field;
}

void GpuFixture::runFrame(const std::function<void(gpu::Frame&)>& encode) {
  gpu::Frame* frame = queue_->begin("test");
  ASSERT_NE(frame, nullptr);
  encode(*frame);
  frame->commit();
  device_->waitIdle();
}

void GpuFixture::runKernel(const std::string& function, std::vector<const gpu::Texture*> textures,
                           std::span<const std::byte> bytes) {
  auto& pipeline = pipelines_[function];
  if (!pipeline) pipeline = device_->makePipeline(*library_, {.function = function});
  const gpu::Texture* target = textures.back();
  textures.pop_back();
  gpu::Pass pass{.pipeline = *pipeline, .label = function.c_str(), .bytes = bytes, .target = *target};
  auto image = pass.images.begin();
  for (const gpu::Texture* texture : textures) {
    const bool sampled = texture == textures.front() && function.starts_with("k_advect");
    (sampled ? pass.textures[0] : *image++) = texture;
  }
  runFrame([&](gpu::Frame& frame) { frame.run(pass); });
}

}  // namespace veloria::tests
