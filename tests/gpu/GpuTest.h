#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Backend.h"

namespace veloria::gpu::test {

/// A device, the test library and a queue; at the end nothing may have been complained about.
class GpuTest : public ::testing::Test {
 protected:
  void SetUp() override {
    device_ = backend().makeDevice();
    library_ = device_->makeLibrary(backend().libraryBytes());
    queue_ = device_->makeCommandQueue();
  }

  void TearDown() override {
    queue_.reset();
    library_.reset();
    device_.reset();
    EXPECT_EQ(backend().complaints(), "");
  }

  std::shared_ptr<Texture> makeTexture(PixelFormat format, Size size,
                                       TextureUsage usage = TextureUsage::shaderRead | TextureUsage::shaderWrite) {
    return device_->makeTexture({format, size, usage, StorageMode::gpuPrivate, "test"});
  }

  std::shared_ptr<ComputePipeline> computePipeline(const std::string& function) {
    return device_->makeComputePipeline(*library_, function);
  }

  std::shared_ptr<RenderPipeline> renderPipeline(const std::string& fragment, PixelFormat format) {
    return device_->makeRenderPipeline(*library_, {"v_cover", fragment, format, fragment});
  }

  /// Encodes with `encode(CommandBuffer&)`, commits and waits.
  template <typename Encode>
  void run(Encode encode) {
    CommandBuffer* buffer = queue_->commandBuffer();
    ASSERT_NE(buffer, nullptr);
    encode(*buffer);
    buffer->commit();
    buffer->waitUntilCompleted();
  }

  /// The same, in one compute encoder.
  template <typename Encode>
  void runCompute(Encode encode) {
    run([&](CommandBuffer& buffer) {
      ComputeEncoder* encoder = buffer.computeEncoder("test");
      ASSERT_NE(encoder, nullptr);
      encode(*encoder);
      encoder->endEncoding();
    });
  }

  template <typename Encoder>
  static void setFloats(Encoder& encoder, const std::vector<float>& values) {
    if constexpr (std::is_same_v<Encoder, RenderEncoder>) {
      encoder.setFragmentBytes(bytesOf(values), bufferIndex);
    } else {
      encoder.setBytes(bytesOf(values), bufferIndex);
    }
  }

  static void dispatchOver(ComputeEncoder& encoder, const Texture& texture) {
    encoder.dispatchThreads(texture.size().width, texture.size().height);
  }

  /// Draws `source` (or nothing) over the whole of `target` with one fragment function.
  void drawOver(CommandBuffer& buffer, const Texture& target, const RenderPipeline& pipeline, const Texture* source,
                const std::vector<float>& bytes = {}) {
    RenderEncoder* encoder = buffer.renderEncoder(target, "draw");
    ASSERT_NE(encoder, nullptr);
    encoder->setPipeline(pipeline);
    if (source != nullptr) encoder->setFragmentTexture(*source, 0);
    if (!bytes.empty()) setFloats(*encoder, bytes);
    encoder->draw(3);
    encoder->endEncoding();
  }

  std::unique_ptr<Device> device_;
  std::unique_ptr<Library> library_;
  std::unique_ptr<CommandQueue> queue_;
};

}  // namespace veloria::gpu::test
