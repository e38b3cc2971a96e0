#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "gpu/metal/MetalCompletion.h"
#include "gpu/metal/MetalDrawableCount.h"
#include "gpu/metal/MetalFunction.h"
#include "gpu/metal/MetalGroupSize.h"

namespace veloria::gpu::metal {
namespace {

using ::testing::HasSubstr;

TEST(MetalGroupSize, ARowIsAsWideAsTheThreadsThatRunInStep) {
  EXPECT_EQ(groupSizeFor(32, 1024), (Size{32, 32}));
  EXPECT_EQ(groupSizeFor(32, 896), (Size{32, 28}));
  EXPECT_EQ(groupSizeFor(64, 100), (Size{64, 1}));
  EXPECT_EQ(groupSizeFor(64, 32), (Size{64, 1}));
  EXPECT_EQ(groupSizeFor(0, 0), (Size{1, 1}));
}

struct Binding {
  BindingKind kind;
  std::size_t index;
  std::size_t bytes;
};

FunctionBindings bindingsOf(const std::vector<Binding>& all) {
  FunctionBindings bindings;
  for (const Binding& one : all) addBinding(bindings, one.kind, one.index, one.bytes, "k_test");
  return bindings;
}

std::string refusalOf(const Binding& binding) {
  try {
    bindingsOf({binding});
  } catch (const DeviceError& error) {
    return error.what();
  }
  return "taken";
}

TEST(MetalFunction, WhatTheInterfaceDoesNotHaveIsRefused) {
  EXPECT_EQ(refusalOf({BindingKind::texture, 3, 0}), "taken");
  EXPECT_EQ(refusalOf({BindingKind::buffer, 0, 168}), "taken");
  EXPECT_EQ(refusalOf({BindingKind::sampler, 3, 0}), "taken");
  EXPECT_THAT(refusalOf({BindingKind::texture, 4, 0}), HasSubstr("k_test wants texture 4"));
  EXPECT_THAT(refusalOf({BindingKind::buffer, 1, 168}), HasSubstr("k_test wants buffer 1"));
  EXPECT_THAT(refusalOf({BindingKind::sampler, 4, 0}), HasSubstr("k_test wants sampler 4"));
  EXPECT_THAT(refusalOf({BindingKind::other, 0, 0}), HasSubstr("another kind"));
}

std::string missing(const FunctionBindings& bindings, const std::array<bool, 4>& textures, std::size_t bytes) {
  try {
    requireBound(bindings, textures, bytes, "k_test");
  } catch (const PreconditionError& error) {
    return error.what();
  }
  return "";
}

TEST(MetalFunction, RunsOnlyWithAllThatItWants) {
  const FunctionBindings bindings =
      bindingsOf({{BindingKind::texture, 0, 0}, {BindingKind::texture, 2, 0}, {BindingKind::buffer, 0, 168}});
  EXPECT_EQ(missing(bindings, {true, false, true, false}, 168), "");
  EXPECT_EQ(missing(bindings, {true, true, true, true}, 256), "");
  EXPECT_THAT(missing(bindings, {true, true, false, true}, 168), HasSubstr("index 2"));
  EXPECT_THAT(missing(bindings, {true, false, true, false}, 164), HasSubstr("168 bytes, 164 are set"));
  EXPECT_EQ(missing({}, {}, 0), "");
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
