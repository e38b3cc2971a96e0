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
    runCompute([&](ComputeEncoder& encoder) {
      encoder.setPipeline(*pipeline);
      encoder.setTexture(*texture, 0);
      dispatchOver(encoder, *texture);
    });
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
  void step(ComputeEncoder& encoder, const ComputePipeline& pipeline, std::size_t number) {
    encoder.setPipeline(pipeline);
    encoder.setTexture(*textures_[number % 2], 0);
    encoder.setTexture(*textures_[1 - number % 2], 1);
    setFloats(encoder, {static_cast<float>(number % 3)});
    dispatchOver(encoder, *textures_[0]);
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

TEST_F(ChainTest, DispatchesSeeWhatEarlierOnesWrote) {
  constexpr std::size_t steps = 300;
  makeTextures({190, 41});
  const auto pipeline = computePipeline("k_add");
  runCompute([&](ComputeEncoder& encoder) {
    for (std::size_t number = 0; number < steps; ++number) step(encoder, *pipeline, number);
  });
  expectSum(steps);
}

TEST_F(ChainTest, SoDoEncodersAndCommandBuffersAndQueues) {
  constexpr std::size_t steps = 40;
  makeTextures({64, 64});
  const auto pipeline = computePipeline("k_add");
  const auto other = device_->makeCommandQueue();
  std::size_t number = 0;
  while (number < steps) {
    CommandBuffer* buffer = (number % 4 == 0 ? queue_ : other)->commandBuffer();
    ASSERT_NE(buffer, nullptr);
    for (int encoders = 0; encoders < 2; ++encoders) {
      ComputeEncoder* encoder = buffer->computeEncoder("step");
      step(*encoder, *pipeline, number++);
      encoder->endEncoding();
    }
    buffer->commit();
  }
  expectSum(steps);
}

TEST_F(ChainTest, ADiscardedBufferLeavesNoTraceAndNoHoleInTheOrder) {
  makeTextures({64, 64});
  const auto pipeline = computePipeline("k_add");
  CommandBuffer* first = queue_->commandBuffer();
  ComputeEncoder* encoder = first->computeEncoder("kept");
  step(*encoder, *pipeline, 0);
  step(*encoder, *pipeline, 1);
  encoder->endEncoding();
  first->commit();

  CommandBuffer* discarded = queue_->commandBuffer();
  bool called = false;
  discarded->addCompletedHandler([&](const Completion&) { called = true; });
  step(*discarded->computeEncoder("given up with its encoder open"), *pipeline, 2);
  discarded->discard();

  runCompute([&](ComputeEncoder& again) { step(again, *pipeline, 2); });
  expectSum(3);
  EXPECT_FALSE(called);
}

TEST_F(ChainTest, BuffersEncodedAtTheSameTimeRunInTheOrderOfTheirCommits) {
  makeTextures({64, 64});
  const auto pipeline = computePipeline("k_add");
  const auto other = device_->makeCommandQueue();
  for (std::size_t number = 0; number < 16; number += 2) {
    CommandBuffer* later = queue_->commandBuffer();
    ComputeEncoder* laterEncoder = later->computeEncoder("later");
    CommandBuffer* earlier = other->commandBuffer();
    ComputeEncoder* earlierEncoder = earlier->computeEncoder("earlier");
    step(*laterEncoder, *pipeline, number + 1);
    step(*earlierEncoder, *pipeline, number);
    earlierEncoder->endEncoding();
    laterEncoder->endEncoding();
    earlier->commit();
    later->commit();
  }
  expectSum(16);
}

TEST_F(ExecutionTest, BytesChangeFromDispatchToDispatchAndStayBound) {
  const auto pipeline = computePipeline("k_accumulate");
  const auto texture = makeTexture(PixelFormat::rgba16Float, {40, 10});
  writeFloats(*texture, std::vector<float>(40 * 10 * 4, 0));
  runCompute([&](ComputeEncoder& encoder) {
    encoder.setPipeline(*pipeline);
    encoder.setTexture(*texture, 0);
    for (int number = 0; number < 700; ++number) {  // more than one block of bytes holds
      setFloats(encoder, {1, static_cast<float>(number % 2), 0, number == 699 ? 5.0F : 0.0F});
      dispatchOver(encoder, *texture);
    }
    dispatchOver(encoder, *texture);
  });
  const std::vector<float> values = readFloats(*texture);
  for (std::size_t index = 0; index < values.size(); index += 4) {
    ASSERT_EQ((std::array{values[index], values[index + 1], values[index + 2], values[index + 3]}),
              (std::array{701.0F, 351.0F, 0.0F, 10.0F}));
  }
}

TEST_F(ExecutionTest, InlineBytesMayBe4096) {
  const auto pipeline = computePipeline("k_sum_block");
  const auto texture = makeTexture(PixelFormat::r16Float, {3, 2});
  std::vector<float> numbers(maxInlineBytes / sizeof(float), 1.0F);
  numbers.back() = 25.0F;
  runCompute([&](ComputeEncoder& encoder) {
    encoder.setPipeline(*pipeline);
    encoder.setTexture(*texture, 3);
    for (int round = 0; round < 40; ++round) {
      setFloats(encoder, numbers);
      dispatchOver(encoder, *texture);
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
    runCompute([&](ComputeEncoder& encoder) {
      encoder.setPipeline(*pipeline);
      encoder.setTexture(*source, 0);
      encoder.setTexture(*target, 1);
      setFloats(encoder, {point.x, point.y});
      dispatchOver(encoder, *target);
    });
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
  run([&](CommandBuffer& buffer) {
    drawOver(buffer, *target, *where, nullptr, {16, 4});
    drawOver(buffer, *copied, *copy, target.get());
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
    run([&](CommandBuffer& buffer) {
      drawOver(buffer, *target, *where, nullptr, {4, 4});
      ComputeEncoder* encoder = buffer.computeEncoder("sample");
      encoder->setPipeline(*sample);
      encoder->setTexture(*target, 0);
      encoder->setTexture(*result, 1);
      setFloats(*encoder, {0.5F, 0.5F});
      dispatchOver(*encoder, *result);
      encoder->endEncoding();
    });
    EXPECT_NEAR(readFloats(*result)[2] * 2, check.kind, 0.005) << pixelFormatName(check.format);
  }
}

TEST_F(ExecutionTest, APassClearsWhatWasThere) {
  const auto target = makeTexture(PixelFormat::rgba16Float, {5, 3},
                                  TextureUsage::shaderRead | TextureUsage::shaderWrite | TextureUsage::renderTarget);
  writeFloats(*target, std::vector<float>(5 * 3 * 4, 3));
  run([&](CommandBuffer& buffer) { buffer.renderEncoder(*target, "nothing drawn")->endEncoding(); });
  EXPECT_THAT(readFloats(*target), ::testing::Each(0.0F));
}

// Alternates passes and dispatches on the same two textures, so that every kind of hazard occurs.
TEST_F(ExecutionTest, PassesAndDispatchesSeeEachOther) {
  constexpr TextureUsage all = TextureUsage::shaderRead | TextureUsage::shaderWrite | TextureUsage::renderTarget;
  const auto a = makeTexture(PixelFormat::rgba16Float, {200, 50}, all);
  const auto b = makeTexture(PixelFormat::rgba16Float, {200, 50}, all);
  writeFloats(*a, std::vector<float>(200 * 50 * 4, 0));
  const auto add = computePipeline("k_accumulate");
  const auto copy = renderPipeline("f_copy", PixelFormat::rgba16Float);
  for (int frame = 0; frame < 5; ++frame) {
    run([&](CommandBuffer& buffer) {
      for (int round = 0; round < 4; ++round) {
        for (const auto& [source, target] : {std::pair{a, b}, std::pair{b, a}}) {
          ComputeEncoder* encoder = buffer.computeEncoder("add");
          encoder->setPipeline(*add);
          encoder->setTexture(*source, 0);
          setFloats(*encoder, {1, 2, 3, 4});
          dispatchOver(*encoder, *source);
          encoder->endEncoding();
          drawOver(buffer, *target, *copy, source.get());
        }
      }
    });
  }
  const std::vector<float> values = readFloats(*a);
  for (std::size_t index = 0; index < values.size(); ++index) {
    ASSERT_EQ(values[index], 40.0F * static_cast<float>(index % 4 + 1)) << index;
  }
}

TEST_F(ExecutionTest, EveryBufferSeesWhatWasWrittenLastBeforeItsCommit) {
  constexpr Size size{64, 64};
  const auto slow = computePipeline("k_slow");
  const auto add = computePipeline("k_add");
  const auto busy = makeTexture(PixelFormat::r16Float, size);
  auto source = device_->makeTexture({PixelFormat::r16Float, size, TextureUsage::shaderRead, StorageMode::shared, ""});
  std::vector<std::shared_ptr<Texture>> seen;
  for (int round = 0; round < 6; ++round) {
    writeFloats(*source, std::vector<float>(size.width * size.height, static_cast<float>(round)));
    CommandBuffer* buffer = queue_->commandBuffer();
    ComputeEncoder* encoder = buffer->computeEncoder("still runs at the next write");
    encoder->setPipeline(*slow);
    encoder->setTexture(*busy, 0);
    setFloats(*encoder, {2000, 0});
    dispatchOver(*encoder, *busy);
    seen.push_back(makeTexture(PixelFormat::r16Float, size));
    encoder->setPipeline(*add);
    encoder->setTexture(*source, 0);
    encoder->setTexture(*seen.back(), 1);
    setFloats(*encoder, {100});
    dispatchOver(*encoder, *seen.back());
    encoder->endEncoding();
    buffer->commit();
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
    CommandBuffer* buffer = queue_->commandBuffer();
    ComputeEncoder* encoder = buffer->computeEncoder("released");
    encoder->setPipeline(*slow);
    encoder->setTexture(*passing, 0);
    setFloats(*encoder, {2000, static_cast<float>(round)});
    dispatchOver(*encoder, *passing);
    encoder->setPipeline(*add);
    encoder->setTexture(*passing, 0);
    encoder->setTexture(*result, 1);
    setFloats(*encoder, {100});
    dispatchOver(*encoder, *result);
    encoder->endEncoding();
    if (round % 2 == 0) passing.reset();  // before the commit: nothing else encodes with it
    buffer->commit();
    passing.reset();
    slow.reset();
  }
  EXPECT_THAT(readFloats(*result), ::testing::Each(111.0F));
}

TEST_F(ExecutionTest, AtMostThreeBuffersAreInFlight) {
  const auto slow = computePipeline("k_slow");
  const auto texture = makeTexture(PixelFormat::r16Float, {64, 64});
  std::atomic<int> committed{0};
  std::atomic<int> done{0};
  int most = 0;
  for (int number = 0; number < 12; ++number) {
    CommandBuffer* buffer = queue_->commandBuffer();
    most = std::max(most, committed - done);
    ComputeEncoder* encoder = buffer->computeEncoder("slow");
    encoder->setPipeline(*slow);
    encoder->setTexture(*texture, 0);
    setFloats(*encoder, {1000, 0});
    dispatchOver(*encoder, *texture);
    encoder->endEncoding();
    buffer->addCompletedHandler([&](const Completion&) { ++done; });
    ++committed;
    buffer->commit();
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
    run([&](CommandBuffer& buffer) {
      ComputeEncoder* encoder = buffer.computeEncoder("slow");
      encoder->setPipeline(*slow);
      encoder->setTexture(*texture, 0);
      setFloats(*encoder, {500, 0});
      dispatchOver(*encoder, *texture);
      encoder->endEncoding();
      buffer.addCompletedHandler([&](const Completion& completion) { completions.push_back(completion); });
    });
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
  for (int frame = 0; frame < 4; ++frame) {  // each of three buffers has to find out how many passes there are
    run([&](CommandBuffer& buffer) {
      ComputeEncoder* encoder = buffer.computeEncoder("compute");
      for (int round = 0; round < 100; ++round) {
        encoder->setPipeline(*slow);
        encoder->setTexture(*a, 0);
        setFloats(*encoder, {20, 0});
        dispatchOver(*encoder, *a);
        encoder->setPipeline(*add);
        encoder->setTexture(*b, 1);
        dispatchOver(*encoder, *b);
      }
      encoder->endEncoding();
      drawOver(buffer, *target, *copy, b.get());
      buffer.addCompletedHandler([&](const Completion& completion) {
        passes.clear();
        for (const PassTime& pass : completion.passes) passes.emplace_back(pass.name, pass.seconds);
        total = completion.gpuEnd - completion.gpuStart;
      });
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
