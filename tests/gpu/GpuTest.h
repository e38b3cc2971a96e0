#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <span>
#include <utility>

#include "Backend.h"

namespace veloria::tests {

/// A device, a library and a queue; at the end the back end may not have complained about anything.
class GpuTest : public testing::Test {
 protected:
  static constexpr auto drawnAndRead = gpu::TextureUsage::shaderRead | gpu::TextureUsage::renderTarget;

  void SetUp() override { open(backend()); }

  void TearDown() override { open({}); }

  /// Goes on with a device of another back end, or with none. Whatever was made from the one before must be gone.
  void open(const Backend& next) {
    queue_.reset();
    library_.reset();
    device_.reset();
    EXPECT_EQ(backend_.complaints ? backend_.complaints() : "", "");
    backend_ = next;
    if (!next.makeDevice) return;
    device_ = next.makeDevice();
    library_ = device_->makeLibrary(libraryBytes());
    queue_ = device_->makeFrameQueue();
  }

  virtual std::vector<std::byte> libraryBytes() const { return backend_.libraryBytes(); }

  std::shared_ptr<gpu::Texture> makeTexture(gpu::PixelFormat format, gpu::Size size,
                                            gpu::TextureUsage usage = gpu::TextureUsage::shaderRead |
                                                                      gpu::TextureUsage::shaderWrite,
                                            gpu::StorageMode storage = gpu::StorageMode::gpuPrivate) {
    return device_->makeTexture({format, size, usage, storage, "test"});
  }

  std::shared_ptr<gpu::Pipeline> computePipeline(const std::string& function) {
    return device_->makePipeline(*library_, {.function = function});
  }

  std::shared_ptr<gpu::Pipeline> renderPipeline(const std::string& fragment, gpu::PixelFormat format) {
    return device_->makePipeline(*library_, {.function = fragment, .vertexFunction = "v_cover", .format = format});
  }

  /// One frame with the passes of `encode(Frame&)`, done.
  template <typename Encode>
  void run(Encode encode, gpu::CompletedHandler handler = nullptr) {
    gpu::Frame* frame = queue_->begin("test");
    ASSERT_NE(frame, nullptr);
    encode(*frame);
    frame->commit(std::move(handler));
    device_->waitIdle();
  }

  /// One frame with one pass, done.
  void runOne(const gpu::Pass& pass) {
    run([&](gpu::Frame& frame) { frame.run(pass); });
  }

  /// For the length of the call that it is an argument of.
  static std::span<const std::byte> floats(std::initializer_list<float> values) {
    return std::as_bytes(std::span(values.begin(), values.size()));
  }

  Backend backend_;
  std::unique_ptr<gpu::Device> device_;
  std::unique_ptr<gpu::Library> library_;
  std::unique_ptr<gpu::FrameQueue> queue_;
};

}  // namespace veloria::tests
