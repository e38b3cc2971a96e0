#include <atomic>

#include "AllocationCount.h"
#include "GpuTest.h"
#include "gpu/vulkan/VulkanFactory.h"

namespace veloria::gpu::test {

namespace {

// Without validation, which allocates as it likes.
class AllocationTest : public GpuTest {
 protected:
  void SetUp() override {
    if (!countsAllocations()) GTEST_SKIP() << "allocations can't be counted under a sanitizer";
    device_ = vulkan::makeVulkanDevice({});
    library_ = device_->makeLibrary(backend().libraryBytes());
    queue_ = device_->makeCommandQueue();
  }
};

TEST_F(AllocationTest, FramesAllocateNothingAfterWarmUp) {
  const auto add = computePipeline("k_add");
  const auto copy = renderPipeline("f_copy", PixelFormat::rgba16Float);
  const auto a = makeTexture(PixelFormat::r16Float, {64, 16});
  const auto b = makeTexture(PixelFormat::r16Float, {64, 16});
  const auto target =
      makeTexture(PixelFormat::rgba16Float, {64, 16}, TextureUsage::shaderRead | TextureUsage::renderTarget);
  const auto surface = vulkan::makeHostSurface(*device_, [](auto, Size) {});
  const auto draw = renderPipeline("f_copy", PixelFormat::bgra8Unorm);
  surface->configure({64, 16}, PixelFormat::bgra8Unorm);
  std::atomic<int> completed{0};
  const std::array<float, 1> amount{1};

  const auto frame = [&] {
    CommandBuffer* buffer = queue_->commandBuffer();
    buffer->setLabel("a label that is longer than what a string holds in itself");
    buffer->addCompletedHandler([&completed](const Completion&) { ++completed; });
    ComputeEncoder* encoder = buffer->computeEncoder("step");
    encoder->setPipeline(*add);
    for (int iteration = 0; iteration < 40; ++iteration) {
      encoder->setTexture(iteration % 2 == 0 ? *a : *b, 0);
      encoder->setTexture(iteration % 2 == 0 ? *b : *a, 1);
      encoder->setBytes(std::as_bytes(std::span(amount)), bufferIndex);
      encoder->dispatchThreads(64, 16);
    }
    encoder->endEncoding();
    drawOver(*buffer, *target, *copy, a.get());
    if (Drawable* drawable = surface->nextDrawable()) {
      drawOver(*buffer, drawable->texture(), *draw, target.get());
      buffer->present(*drawable);
    }
    buffer->commit();
  };
  for (const bool profiling : {false, true}) {
    queue_->setProfiling(profiling);
    for (int warmUp = 0; warmUp < 12; ++warmUp) frame();
    device_->waitIdle();
    const std::uint64_t before = allocationsInProcess();
    for (int number = 0; number < 30; ++number) frame();
    device_->waitIdle();
    EXPECT_EQ(allocationsInProcess() - before, 0U) << (profiling ? "with" : "without") << " profiling";
  }
  EXPECT_EQ(completed, 84);
}

TEST_F(AllocationTest, TheCounterCounts) {
  const std::uint64_t before = allocationsInProcess();
  const auto texture = makeTexture(PixelFormat::r16Float, {4, 4});
  EXPECT_GT(allocationsInProcess() - before, 0U);
}

}  // namespace

}  // namespace veloria::gpu::test
