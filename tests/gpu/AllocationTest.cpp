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
    queue_ = device_->makeFrameQueue();
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

  const auto frame = [&] {
    Frame* next = queue_->begin("a label that is longer than what a string holds in itself");
    for (int iteration = 0; iteration < 40; ++iteration) {
      next->run({.pipeline = *add,
                 .label = "another label that is longer than what a string holds",
                 .images = {iteration % 2 == 0 ? a.get() : b.get()},
                 .bytes = floats({1}),
                 .target = iteration % 2 == 0 ? *b : *a});
    }
    next->run({.pipeline = *copy, .textures = {a.get()}, .target = *target});
    if (Drawable* drawable = surface->nextDrawable()) {
      next->run({.pipeline = *draw, .textures = {target.get()}, .target = drawable->texture()});
      next->present(*drawable);
    }
    next->commit([&completed](const Completion&) { ++completed; });
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
