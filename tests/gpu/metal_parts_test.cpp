#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "gpu/metal/MetalCompletion.h"
#include "gpu/metal/MetalGroupSize.h"

namespace veloria::tests {
namespace {

using namespace gpu;
using namespace gpu::metal;

TEST(MetalGroupSize, ARowIsAsWideAsTheThreadsThatRunInStep) {
  EXPECT_EQ(groupSizeFor(32, 896), (Size{32, 28}));
  EXPECT_EQ(groupSizeFor(64, 100), (Size{64, 1}));
  EXPECT_EQ(groupSizeFor(64, 32), (Size{64, 1}));
  EXPECT_EQ(groupSizeFor(0, 0), (Size{1, 1}));
}

TEST(MetalDrawableCount, TwoMayWaitAndThoseThatNeverShowAreTakenForLost) {
  MetalDrawableCount count;
  MetalDrawableCount::Clock::time_point now{std::chrono::hours(1)};
  count.presented(now);
  EXPECT_TRUE(count.free(now));
  count.presented(now);
  EXPECT_FALSE(count.free(now + std::chrono::milliseconds(999)));
  EXPECT_TRUE(count.free(now + std::chrono::seconds(1)));
  // They turn up all the same; the count must not run below nothing.
  for (int i = 0; i < 2; ++i) count.shown();
  for (int i = 0; i < 2; ++i) count.presented(now);
  EXPECT_FALSE(count.free(now));
  count.shown();
  EXPECT_TRUE(count.free(now));
}

TEST(MetalCompletion, WaitsForOneAndForAll) {
  struct Client : CompletionClient {
  } idle, busy;
  MetalCompletion completion;
  completion.drain();
  completion.committed(busy);
  completion.waitFor(idle);
  std::atomic<bool> told = false;
  std::thread worker([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    told = true;
    completion.finished(busy);
  });
  completion.waitFor(busy);
  EXPECT_TRUE(told);
  completion.drain();
  worker.join();
}

}  // namespace
}  // namespace veloria::tests
