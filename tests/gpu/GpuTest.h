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
    queue_ = device_->makeFrameQueue();
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

  std::shared_ptr<Pipeline> computePipeline(const std::string& function) {
    return device_->makePipeline(*library_, {.function = function});
  }

  std::shared_ptr<Pipeline> renderPipeline(const std::string& fragment, PixelFormat format) {
    return device_->makePipeline(*library_, {.function = fragment, .vertexFunction = "v_cover", .format = format});
  }

  /// One frame with the passes of `encode(Frame&)`, done.
  template <typename Encode>
  void run(Encode encode, CompletedHandler handler = nullptr) {
    Frame* frame = queue_->begin("test");
    ASSERT_NE(frame, nullptr);
    encode(*frame);
    frame->commit(std::move(handler));
    device_->waitIdle();
  }

  /// One frame with one pass, done.
  void runOne(const Pass& pass) {
    run([&](Frame& frame) { frame.run(pass); });
  }

  /// For the length of the call that it is an argument of.
  static std::span<const std::byte> floats(std::initializer_list<float> values) {
    return std::as_bytes(std::span(values.begin(), values.size()));
  }

  std::unique_ptr<Device> device_;
  std::unique_ptr<Library> library_;
  std::unique_ptr<FrameQueue> queue_;
};

}  // namespace veloria::gpu::test
