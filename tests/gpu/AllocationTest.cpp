#include <atomic>
#include <cstdlib>
#include <new>

#include "GpuTest.h"
#include "gpu/vulkan/VulkanFactory.h"

// A sanitizer has its own operator new, which must not be replaced.
#if defined(__SANITIZE_ADDRESS__)
#define VELORIA_COUNTS_ALLOCATIONS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELORIA_COUNTS_ALLOCATIONS 0
#endif
#endif
#ifndef VELORIA_COUNTS_ALLOCATIONS
#define VELORIA_COUNTS_ALLOCATIONS 1
#endif

namespace {

std::atomic<bool> counting{false};
std::atomic<std::size_t> allocations{0};

}  // namespace

#if VELORIA_COUNTS_ALLOCATIONS

namespace {

void* allocate(std::size_t size) {
  if (counting) ++allocations;
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}

}  // namespace

// Every allocation of this program, whichever thread makes it; the driver has its own.
void* operator new(std::size_t size) {
  return allocate(size);
}
void* operator new[](std::size_t size) {
  return allocate(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}

#endif

namespace veloria::gpu::test {

namespace {

// Without validation, which allocates as it likes.
class AllocationTest : public GpuTest {
 protected:
  void SetUp() override {
    if (VELORIA_COUNTS_ALLOCATIONS == 0) GTEST_SKIP() << "allocations can't be counted under a sanitizer";
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
    allocations = 0;
    counting = true;
    for (int number = 0; number < 30; ++number) frame();
    device_->waitIdle();
    counting = false;
    EXPECT_EQ(allocations, 0U) << (profiling ? "with" : "without") << " profiling";
  }
  EXPECT_EQ(completed, 84);
}

TEST_F(AllocationTest, TheCounterCounts) {
  counting = true;
  allocations = 0;
  const auto texture = makeTexture(PixelFormat::r16Float, {4, 4});
  counting = false;
  EXPECT_GT(allocations, 0U);
}

}  // namespace

}  // namespace veloria::gpu::test
