#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "gpu/metal/MetalCompletion.h"
#include "gpu/metal/MetalDrawableCount.h"
#include "gpu/metal/MetalGroupSize.h"

namespace veloria::gpu::metal {
namespace {

TEST(MetalGroupSize, ARowIsAsWideAsTheThreadsThatRunInStep) {
  EXPECT_EQ(groupSizeFor(32, 1024), (Size{32, 32}));
  EXPECT_EQ(groupSizeFor(32, 896), (Size{32, 28}));
  EXPECT_EQ(groupSizeFor(64, 100), (Size{64, 1}));
  EXPECT_EQ(groupSizeFor(64, 32), (Size{64, 1}));
  EXPECT_EQ(groupSizeFor(0, 0), (Size{1, 1}));
}

class MetalDrawables : public ::testing::Test {
 protected:
  bool free() { return count_.free(now_); }
  void present() { count_.presented(now_); }
  void pass(std::chrono::milliseconds time) { now_ += time; }

  MetalDrawableCount count_;
  MetalDrawableCount::Clock::time_point now_{std::chrono::hours(1)};
};

TEST_F(MetalDrawables, OneMayWaitWhileAnotherIsDrawn) {
  EXPECT_TRUE(free());
  present();
  EXPECT_TRUE(free());
  present();
  EXPECT_FALSE(free());
  count_.shown();
  EXPECT_TRUE(free());
}

TEST_F(MetalDrawables, ThoseThatNeverComeToTheScreenAreTakenForLost) {
  present();
  present();
  pass(std::chrono::milliseconds(999));
  EXPECT_FALSE(free());
  pass(std::chrono::milliseconds(1));
  EXPECT_TRUE(free());
  // They turn up all the same; the count must not run below nothing.
  count_.shown();
  count_.shown();
  present();
  present();
  EXPECT_FALSE(free());
}

class Client : public CompletionClient {};

TEST(MetalCompletion, WaitsForOneAndForAll) {
  MetalCompletion completion;
  Client idle;
  Client busy;
  completion.waitFor(idle);
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
}  // namespace veloria::gpu::metal
