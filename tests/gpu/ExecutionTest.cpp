#include <algorithm>
#include <array>
#include <atomic>
#include <string>
#include <utility>
#include <vector>

#include "GpuTest.h"

namespace veloria::gpu::test {

namespace {

// What functions compute, for back ends that run them.
class ExecutionTest : public GpuTest {};

TEST_F(ExecutionTest, GridsNeedNotBeMultiplesOfTheGroup) {
  const auto pipeline = computePipeline("k_coordinates");
  for (const Size size : {Size{1, 1}, Size{31, 9}, Size{32, 8}, Size{33, 7}, Size{257, 3}}) {
    const auto texture = makeTexture(PixelFormat::rg16Float, size);
    runOne({.pipeline = *pipeline, .target = *texture});
    const std::vector<float> values = readFloats(*texture);
    for (std::size_t index = 0; index < values.size() / 2; ++index) {
      ASSERT_EQ(values[2 * index], static_cast<float>(index % size.width)) << size.width << " x " << size.height;
      ASSERT_EQ(values[2 * index + 1], static_cast<float>(index / size.width));
    }
  }
}

// The chain reads the opposite corner at each step, so a step that runs before the last one is done shows.
class ChainTest : public ExecutionTest {
 protected:
  void TearDown() override {
    textures_ = {};
    ExecutionTest::TearDown();
  }
  void step(Frame& frame, const Pipeline& pipeline, std::size_t number) {
    frame.run({.pipeline = pipeline,
               .images = {textures_[number % 2].get()},
               .bytes = floats({static_cast<float>(number % 3)}),
               .target = *textures_[1 - number % 2]});
  }
  void makeTextures(Size size) {
    for (auto& texture : textures_) texture = makeTexture(PixelFormat::r16Float, size);
    writeFloats(*textures_[0], std::vector<float>(size.width * size.height, 1.0F));
  }
  void expectSum(std::size_t steps) {
    float expected = 1;
    for (std::size_t number = 0; number < steps; ++number) expected += static_cast<float>(number % 3);
    EXPECT_THAT(readFloats(*textures_[steps % 2]), ::testing::Each(expected));
  }

  std::array<std::shared_ptr<Texture>, 2> textures_;
};

TEST_F(ChainTest, PassesSeeWhatEarlierOnesWrote) {
  constexpr std::size_t steps = 300;
  makeTextures({190, 41});
  const auto pipeline = computePipeline("k_add");
  run([&](Frame& frame) {
    for (std::size_t number = 0; number < steps; ++number) step(frame, *pipeline, number);
  });
  expectSum(steps);
}

TEST_F(ChainTest, SoDoFramesAndQueues) {
  constexpr std::size_t steps = 40;
  makeTextures({64, 64});
  const auto pipeline = computePipeline("k_add");
  const auto other = device_->makeFrameQueue();
  for (std::size_t number = 0; number < steps; number += 2) {
    Frame* frame = (number % 4 == 0 ? queue_ : other)->begin("two steps");
    ASSERT_NE(frame, nullptr);
    step(*frame, *pipeline, number);
    step(*frame, *pipeline, number + 1);
    frame->commit();
  }
  expectSum(steps);
}

TEST_F(ChainTest, AFrameThatIsNotCommittedLeavesNoTraceAndNoHoleInTheOrder) {
  makeTextures({64, 64});
  const auto pipeline = computePipeline("k_add");
  const auto other = device_->makeFrameQueue();
  for (FrameQueue* next : {queue_.get(), other.get()}) {
    Frame* first = queue_->begin("kept");
    step(*first, *pipeline, 0);
    step(*first, *pipeline, 1);
    first->commit();
    step(*next->begin("given up"), *pipeline, 2);
    run([&](Frame& frame) { step(frame, *pipeline, 2); });
    expectSum(3);
    makeTextures({64, 64});
  }
}

TEST_F(ExecutionTest, BytesAreEachPassesOwn) {
  const auto pipeline = computePipeline("k_add_color");
  const std::array textures{makeTexture(PixelFormat::rgba16Float, {40, 10}),
                            makeTexture(PixelFormat::rgba16Float, {40, 10})};
  writeFloats(*textures[0], std::vector<float>(40 * 10 * 4, 0));
  run([&](Frame& frame) {
    for (std::size_t number = 0; number < 700; ++number) {  // more than one block of bytes holds
      frame.run({.pipeline = *pipeline,
                 .images = {textures[number % 2].get()},
                 .bytes = floats({1, static_cast<float>(number % 2), 0, number == 699 ? 5.0F : 0.0F}),
                 .target = *textures[1 - number % 2]});
    }
  });
  const std::vector<float> values = readFloats(*textures[0]);
  for (std::size_t index = 0; index < values.size(); index += 4) {
    ASSERT_EQ((std::array{values[index], values[index + 1], values[index + 2], values[index + 3]}),
              (std::array{700.0F, 350.0F, 0.0F, 5.0F}));
  }
}

TEST_F(ExecutionTest, BytesMayBe4096) {
  const auto pipeline = computePipeline("k_sum_block");
  const auto texture = makeTexture(PixelFormat::r16Float, {3, 2});
  std::vector<float> numbers(maxPassBytes / sizeof(float), 1.0F);
  numbers.back() = 25.0F;
  run([&](Frame& frame) {
    for (int round = 0; round < 40; ++round) {
      frame.run({.pipeline = *pipeline, .bytes = bytesOf(numbers), .target = *texture});
    }
  });
  EXPECT_THAT(readFloats(*texture), ::testing::Each(1048.0F));
}

TEST_F(ExecutionTest, SamplingIsBilinearAndClampsToTheEdge) {
  struct Case {
    float x, y, expected;
  };
  // 10 20
  // 30 50, the first row at the top
  const auto source = makeTexture(PixelFormat::r16Float, {2, 2});
  writeFloats(*source, {10, 20, 30, 50});
  const auto target = makeTexture(PixelFormat::rgba16Float, {1, 1});
  const auto pipeline = computePipeline("k_sample");
  for (const Case& point : {Case{0.25F, 0.25F, 10}, Case{0.75F, 0.25F, 20}, Case{0.25F, 0.75F, 30},
                            Case{0.75F, 0.75F, 50}, Case{0.5F, 0.25F, 15}, Case{0.5F, 0.5F, 27.5F}, Case{0, 0, 10},
                            Case{-3, 0.75F, 30}, Case{4, 0.25F, 20}, Case{1, 7, 50}}) {
    runOne({.pipeline = *pipeline, .textures = {source.get()}, .bytes = floats({point.x, point.y}), .target = *target});
    EXPECT_NEAR(readFloats(*target)[0], point.expected, 0.1) << point.x << ", " << point.y;
  }
}

TEST_F(ExecutionTest, PassesHaveTheirOriginAtTheTopLeft) {
  constexpr Size size{16, 4};
  const auto target =
      makeTexture(PixelFormat::rgba16Float, size, TextureUsage::shaderRead | TextureUsage::renderTarget);
  const auto where = renderPipeline("f_where", PixelFormat::rgba16Float);
  const auto copied =
      makeTexture(PixelFormat::rgba16Float, size, TextureUsage::shaderRead | TextureUsage::renderTarget);
  const auto copy = renderPipeline("f_copy", PixelFormat::rgba16Float);
  run([&](Frame& frame) {
    frame.run({.pipeline = *where, .bytes = floats({16, 4}), .target = *target});
    frame.run({.pipeline = *copy, .textures = {target.get()}, .target = *copied});
  });
  for (const auto& texture : {target, copied}) {
    const std::vector<float> values = readFloats(*texture);
    for (std::size_t y = 0; y < 4; ++y) {
      for (std::size_t x = 0; x < 16; ++x) {
        const std::size_t index = 4 * (y * 16 + x);
        ASSERT_NEAR(values[index], (static_cast<double>(x) + 0.5) / 16, 1e-3);
        ASSERT_NEAR(values[index + 1], (static_cast<double>(y) + 0.5) / 4, 1e-3);
        ASSERT_EQ(values[index + 3], 1);
      }
    }
  }
}

TEST_F(ExecutionTest, FragmentFunctionsAreToldTheKindOfTheirTarget) {
  struct Case {
    PixelFormat format;
    float kind;
  };
  for (const Case& check : {Case{PixelFormat::rgba8Unorm, 1}, Case{PixelFormat::bgra8Unorm, 1},
                            Case{PixelFormat::bgra8UnormSrgb, 2}, Case{PixelFormat::rgba16Float, 0}}) {
    const auto target = makeTexture(check.format, {4, 4}, TextureUsage::shaderRead | TextureUsage::renderTarget);
    const auto result = makeTexture(PixelFormat::rgba16Float, {1, 1});
    const auto where = renderPipeline("f_where", check.format);
    const auto sample = computePipeline("k_sample");
    run([&](Frame& frame) {
      frame.run({.pipeline = *where, .bytes = floats({4, 4}), .target = *target});
      frame.run({.pipeline = *sample, .textures = {target.get()}, .bytes = floats({0.5F, 0.5F}), .target = *result});
    });
    EXPECT_NEAR(readFloats(*result)[2] * 2, check.kind, 0.005) << pixelFormatName(check.format);
  }
}

// Alternates fragment and compute functions on the same two textures, so that every kind of hazard occurs.
TEST_F(ExecutionTest, FragmentAndComputeFunctionsSeeEachOther) {
  constexpr TextureUsage all = TextureUsage::shaderRead | TextureUsage::shaderWrite | TextureUsage::renderTarget;
  const auto a = makeTexture(PixelFormat::rgba16Float, {200, 50}, all);
  const auto b = makeTexture(PixelFormat::rgba16Float, {200, 50}, all);
  writeFloats(*a, std::vector<float>(200 * 50 * 4, 0));
  const auto add = computePipeline("k_add_color");
  const auto copy = renderPipeline("f_copy", PixelFormat::rgba16Float);
  for (int number = 0; number < 5; ++number) {
    run([&](Frame& frame) {
      for (int round = 0; round < 4; ++round) {
        for (int times = 0; times < 2; ++times) {
          frame.run({.pipeline = *add, .images = {a.get()}, .bytes = floats({1, 2, 3, 4}), .target = *b});
          frame.run({.pipeline = *copy, .textures = {b.get()}, .target = *a});
        }
        frame.run({.pipeline = *copy, .textures = {a.get()}, .target = *b});
        frame.run({.pipeline = *add, .images = {b.get()}, .bytes = floats({1, 1, 1, 1}), .target = *a});
      }
    });
  }
  const std::vector<float> values = readFloats(*a);
  for (std::size_t index = 0; index < values.size(); ++index) {
    ASSERT_EQ(values[index], 40.0F * static_cast<float>(index % 4 + 1) + 20.0F) << index;
  }
}

TEST_F(ExecutionTest, EveryFrameSeesWhatWasWrittenLastBeforeItsCommit) {
  constexpr Size size{64, 64};
  const auto slow = computePipeline("k_slow");
  const auto add = computePipeline("k_add");
  const auto busy = makeTexture(PixelFormat::r16Float, size);
  auto source = device_->makeTexture({PixelFormat::r16Float, size, TextureUsage::shaderRead, StorageMode::shared, ""});
  std::vector<std::shared_ptr<Texture>> seen;
  for (int round = 0; round < 6; ++round) {
    writeFloats(*source, std::vector<float>(size.width * size.height, static_cast<float>(round)));
    seen.push_back(makeTexture(PixelFormat::r16Float, size));
    Frame* frame = queue_->begin("still runs at the next write");
    frame->run({.pipeline = *slow, .bytes = floats({2000, 0}), .target = *busy});
    frame->run({.pipeline = *add, .images = {source.get()}, .bytes = floats({100}), .target = *seen.back()});
    frame->commit();
  }
  writeFloats(*source, std::vector<float>(size.width * size.height, 9));
  source.reset();  // with its last write under way
  for (std::size_t round = 0; round < seen.size(); ++round) {
    EXPECT_THAT(readFloats(*seen[round]), ::testing::Each(100.0F + static_cast<float>(round)));
  }
}

TEST_F(ExecutionTest, TexturesAndPipelinesMayBeReleasedInFlight) {
  const auto result = makeTexture(PixelFormat::r16Float, {64, 64});
  const auto add = computePipeline("k_add");
  for (int round = 0; round < 12; ++round) {
    auto slow = computePipeline("k_slow");
    auto passing = makeTexture(PixelFormat::r16Float, {64, 64});
    Frame* frame = queue_->begin("released");
    frame->run({.pipeline = *slow, .bytes = floats({2000, static_cast<float>(round)}), .target = *passing});
    frame->run({.pipeline = *add, .images = {passing.get()}, .bytes = floats({100}), .target = *result});
    if (round % 2 == 0) passing.reset();  // before the commit: nothing else is drawn with it
    frame->commit();
    passing.reset();
    slow.reset();
  }
  EXPECT_THAT(readFloats(*result), ::testing::Each(111.0F));
}

TEST_F(ExecutionTest, AtMostThreeFramesAreInFlight) {
  const auto slow = computePipeline("k_slow");
  const auto texture = makeTexture(PixelFormat::r16Float, {64, 64});
  std::atomic<int> committed{0};
  std::atomic<int> done{0};
  int most = 0;
  for (int number = 0; number < 12; ++number) {
    Frame* frame = queue_->begin("slow");
    most = std::max(most, committed - done);
    frame->run({.pipeline = *slow, .bytes = floats({1000, 0}), .target = *texture});
    ++committed;
    frame->commit([&](const Completion&) { ++done; });
  }
  device_->waitIdle();
  EXPECT_EQ(done, 12);
  EXPECT_LE(most, 2) << "while a fourth one is being had, at most two others can be unfinished";
}

TEST_F(ExecutionTest, TimesAreOnTheGpusClockAndInOrder) {
  const auto slow = computePipeline("k_slow");
  const auto texture = makeTexture(PixelFormat::r16Float, {128, 64});
  std::vector<Completion> completions;
  for (int number = 0; number < 3; ++number) {
    run(
        [&](Frame& frame) {
          frame.run({.pipeline = *slow, .bytes = floats({500, 0}), .target = *texture});
        },
        [&](const Completion& completion) { completions.push_back(completion); });
  }
  ASSERT_EQ(completions.size(), 3U);
  for (std::size_t index = 0; index < completions.size(); ++index) {
    EXPECT_GT(completions[index].gpuEnd, completions[index].gpuStart);
    EXPECT_TRUE(completions[index].passes.empty());
    if (index == 0) continue;
    EXPECT_GE(completions[index].gpuStart, completions[index - 1].gpuEnd);
  }
}

TEST_F(ExecutionTest, ProfilingSumsTimesByFunction) {
  const auto slow = computePipeline("k_slow");
  const auto add = computePipeline("k_add");
  const auto copy = renderPipeline("f_copy", PixelFormat::rgba16Float);
  const auto a = makeTexture(PixelFormat::r16Float, {64, 64});
  const auto b = makeTexture(PixelFormat::r16Float, {64, 64});
  const auto target =
      makeTexture(PixelFormat::rgba16Float, {64, 64}, TextureUsage::shaderRead | TextureUsage::renderTarget);
  queue_->setProfiling(true);
  std::vector<std::pair<std::string, double>> passes;
  double total = 0;
  for (int number = 0; number < 4; ++number) {  // each of three frames has to find out how many passes there are
    run(
        [&](Frame& frame) {
          for (int round = 0; round < 100; ++round) {
            frame.run({.pipeline = *slow, .bytes = floats({20, 0}), .target = *a});
            frame.run({.pipeline = *add, .images = {a.get()}, .bytes = floats({20}), .target = *b});
          }
          frame.run({.pipeline = *copy, .textures = {b.get()}, .target = *target});
        },
        [&](const Completion& completion) {
          passes.clear();
          for (const PassTime& pass : completion.passes) passes.emplace_back(pass.name, pass.seconds);
          total = completion.gpuEnd - completion.gpuStart;
        });
  }
  ASSERT_EQ(passes.size(), 3U);
  EXPECT_EQ(passes[0].first, "k_slow");
  EXPECT_EQ(passes[1].first, "k_add");
  EXPECT_EQ(passes[2].first, "f_copy");
  double sum = 0;
  for (const auto& [name, seconds] : passes) {
    EXPECT_GT(seconds, 0) << name;
    sum += seconds;
  }
  EXPECT_LE(sum, total * 1.001);
  EXPECT_GT(passes[0].second, passes[1].second);
}

}  // namespace

}  // namespace veloria::gpu::test
