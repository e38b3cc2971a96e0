// What every back end does.

#include <atomic>
#include <random>

#include "GpuTest.h"

namespace veloria::tests {
namespace {

using namespace gpu;
using testing::Each;

constexpr TextureUsage written = TextureUsage::shaderRead | TextureUsage::shaderWrite;

TEST_F(GpuTest, BytesComeBackAsTheyWereWritten) {
  const std::pair<PixelFormat, TextureUsage> kinds[] = {
      {PixelFormat::r16Float, written},        {PixelFormat::rg16Float, written},
      {PixelFormat::rgba16Float, written},     {PixelFormat::rgba16Float, drawnAndRead},
      {PixelFormat::rgba8Unorm, drawnAndRead}, {PixelFormat::bgra8Unorm, TextureUsage::shaderRead},
      {PixelFormat::bgra8Unorm, drawnAndRead}, {PixelFormat::bgra8UnormSrgb, drawnAndRead}};
  std::minstd_rand random(7);
  for (const auto& [format, usage] : kinds) {
    SCOPED_TRACE(pixelFormatName(format));
    for (const Size size : {Size{1, 1}, Size{33, 7}, Size{1920, 33}}) {
      for (const StorageMode storage : {StorageMode::gpuPrivate, StorageMode::shared}) {
        const auto texture = makeTexture(format, size, usage, storage);
        std::vector<std::byte> bytes(bytesPerPixel(format) * size.width * size.height);
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::byte>(random() & 0x7B); });
        std::vector<std::byte> read(bytes.size());
        for (int round = 0; round < 2; ++round) {
          std::reverse(bytes.begin(), bytes.end());
          texture->write(bytes);
          texture->read(read);
          ASSERT_EQ(read, bytes);
        }
      }
    }
  }
}

TEST_F(GpuTest, BrokenContractsAreFound) {
  const auto texture = makeTexture(PixelFormat::rgba16Float, {4, 4});
  const auto target = makeTexture(PixelFormat::rgba16Float, {4, 4}, TextureUsage::renderTarget);
  const auto add = computePipeline("k_add");
  const auto copy = renderPipeline("f_copy", PixelFormat::rgba16Float);
  const auto other = renderPipeline("f_copy", PixelFormat::bgra8Unorm);
  std::vector<std::byte> bytes(4097);
  constexpr Size flat{1, 0}, tooTall{1, 16385};
  Frame* frame = nullptr;
  const std::function<void()> cases[] = {
      [&] { makeTexture(PixelFormat::r16Float, flat); },
      [&] { makeTexture(PixelFormat::r16Float, tooTall); },
      [&] { texture->write(bytes); },
      [&] { texture->read(bytes); },
      [&] { computePipeline("k_nothing"); },
      [&] { frame->commit(), frame->commit(); },
      [&] { queue_->begin("next"), frame->commit(); },
      [&] { frame->run({.pipeline = *copy, .target = *texture}); },
      [&] { frame->run({.pipeline = *add, .target = *target}); },
      [&] { frame->run({.pipeline = *add, .textures = {texture.get()}, .target = *texture}); },
      [&] { frame->run({.pipeline = *add, .bytes = bytes, .target = *texture}); },
      [&] { frame->run({.pipeline = *other, .target = *target}); }};
  for (const auto& breaks : cases) {
    frame = queue_->begin("frame");
    ASSERT_NE(frame, nullptr);
    EXPECT_THROW(breaks(), PreconditionError) << &breaks - cases;
  }
}

class ExecutionTest : public GpuTest {
 protected:
  void TearDown() override {
    pair_ = {};
    add_.reset();
    GpuTest::TearDown();
  }

  /// Two textures of ones. A chain of steps reads the opposite corner each time, so a step that runs before the last
  /// one is done shows.
  void makePair(Size size) {
    for (auto& texture : pair_) texture = makeTexture(PixelFormat::r16Float, size);
    writeFloats(*pair_[0], std::vector<float>(size.width * size.height, 1.0F));
    add_ = computePipeline("k_add");
  }
  void steps(Frame& frame, std::size_t from, std::size_t to) {
    for (std::size_t number = from; number < to; ++number) {
      frame.run({.pipeline = *add_,
                 .images = {pair_[number % 2].get()},
                 .bytes = floats({static_cast<float>(number % 3)}),
                 .target = *pair_[1 - number % 2]});
    }
  }
  void expectSum(std::size_t count) {
    float expected = 1;
    for (std::size_t number = 0; number < count; ++number) expected += static_cast<float>(number % 3);
    EXPECT_THAT(readFloats(*pair_[count % 2]), Each(expected));
  }

  std::array<std::shared_ptr<Texture>, 2> pair_;
  std::shared_ptr<Pipeline> add_;
};

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

TEST_F(ExecutionTest, PassesSeeWhatEarlierOnesWrote) {
  makePair({190, 41});
  run([&](Frame& frame) { steps(frame, 0, 300); });
  expectSum(300);
}

TEST_F(ExecutionTest, AFrameThatIsNotCommittedLeavesNoTraceAndNoHoleInTheOrder) {
  const auto other = device_->makeFrameQueue();
  for (FrameQueue* next : {queue_.get(), other.get()}) {
    makePair({64, 64});
    Frame* first = queue_->begin("kept");
    steps(*first, 0, 2);
    first->commit();
    steps(*next->begin("given up"), 2, 3);
    run([&](Frame& frame) { steps(frame, 2, 3); });
    expectSum(3);
  }
}

TEST_F(ExecutionTest, EveryPassHasBytesOfItsOwn) {
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
  for (std::size_t index = 0; index < values.size(); ++index) {
    ASSERT_EQ(values[index], (std::array{700.0F, 350.0F, 0.0F, 5.0F})[index % 4]);
  }
}

TEST_F(ExecutionTest, SamplingIsBilinearAndClampsToTheEdge) {
  const auto source = makeTexture(PixelFormat::r16Float, {2, 2});
  writeFloats(*source, {10, 20, 30, 50});  // the first row at the top
  const auto target = makeTexture(PixelFormat::rgba16Float, {1, 1});
  const auto pipeline = computePipeline("k_sample");
  using Sample = std::array<float, 3>;
  for (const auto& [x, y, expected] :
       {Sample{0.25F, 0.25F, 10}, Sample{0.75F, 0.25F, 20}, Sample{0.25F, 0.75F, 30}, Sample{0.75F, 0.75F, 50},
        Sample{0.5F, 0.25F, 15}, Sample{0.5F, 0.5F, 27.5F}, Sample{0, 0, 10}, Sample{-3, 0.75F, 30},
        Sample{4, 0.25F, 20}, Sample{1, 7, 50}}) {
    runOne({.pipeline = *pipeline, .textures = {source.get()}, .bytes = floats({x, y}), .target = *target});
    EXPECT_NEAR(readFloats(*target)[0], expected, 0.1) << x << ", " << y;
  }
}

TEST_F(ExecutionTest, PassesHaveTheirOriginAtTheTopLeft) {
  constexpr Size size{16, 4};
  const auto target = makeTexture(PixelFormat::rgba16Float, size, drawnAndRead);
  const auto copied = makeTexture(PixelFormat::rgba16Float, size, drawnAndRead);
  const auto where = renderPipeline("f_where", PixelFormat::rgba16Float);
  const auto copy = renderPipeline("f_copy", PixelFormat::rgba16Float);
  run([&](Frame& frame) {
    frame.run({.pipeline = *where, .bytes = floats({16, 4}), .target = *target});
    frame.run({.pipeline = *copy, .textures = {target.get()}, .target = *copied});
  });
  for (const auto& texture : {target, copied}) {
    const std::vector<float> values = readFloats(*texture);
    for (std::size_t index = 0; index < values.size() / 4; ++index) {
      ASSERT_NEAR(values[4 * index], (static_cast<double>(index % 16) + 0.5) / 16, 1e-3);
      ASSERT_NEAR(values[4 * index + 1], (static_cast<double>(index / 16) + 0.5) / 4, 1e-3);
      ASSERT_EQ(values[4 * index + 3], 1);
    }
  }
}

TEST_F(ExecutionTest, FragmentFunctionsGetTheKindOfTheirTarget) {
  const std::pair<PixelFormat, double> kinds[] = {{PixelFormat::rgba8Unorm, 1},
                                                  {PixelFormat::bgra8Unorm, 1},
                                                  {PixelFormat::bgra8UnormSrgb, 2},
                                                  {PixelFormat::rgba16Float, 0}};
  const auto sample = computePipeline("k_sample");
  const auto result = makeTexture(PixelFormat::rgba16Float, {1, 1});
  for (const auto& [format, kind] : kinds) {
    const auto target = makeTexture(format, {4, 4}, drawnAndRead);
    const auto where = renderPipeline("f_where", format);
    run([&](Frame& frame) {
      frame.run({.pipeline = *where, .bytes = floats({4, 4}), .target = *target});
      frame.run({.pipeline = *sample, .textures = {target.get()}, .bytes = floats({0.5F, 0.5F}), .target = *result});
    });
    EXPECT_NEAR(readFloats(*result)[2] * 2, kind, 0.005) << pixelFormatName(format);
  }
}

// Alternates both on the same two textures, so that every kind of hazard occurs.
TEST_F(ExecutionTest, FragmentAndComputeFunctionsSeeEachOther) {
  const auto a = makeTexture(PixelFormat::rgba16Float, {200, 50}, drawnAndRead | TextureUsage::shaderWrite);
  const auto b = makeTexture(PixelFormat::rgba16Float, {200, 50}, drawnAndRead | TextureUsage::shaderWrite);
  writeFloats(*a, std::vector<float>(200 * 50 * 4, 0));
  const auto add = computePipeline("k_add_color");
  const auto copy = renderPipeline("f_copy", PixelFormat::rgba16Float);
  run([&](Frame& frame) {
    for (int round = 0; round < 10; ++round) {
      frame.run({.pipeline = *add, .images = {a.get()}, .bytes = floats({1, 2, 3, 4}), .target = *b});
      frame.run({.pipeline = *copy, .textures = {b.get()}, .target = *a});
      frame.run({.pipeline = *copy, .textures = {a.get()}, .target = *b});
      frame.run({.pipeline = *add, .images = {b.get()}, .bytes = floats({1, 2, 3, 4}), .target = *a});
    }
  });
  const std::vector<float> values = readFloats(*a);
  for (std::size_t index = 0; index < values.size(); ++index) {
    ASSERT_EQ(values[index], 20.0F * static_cast<float>(index % 4 + 1)) << index;
  }
}

TEST_F(ExecutionTest, EveryFrameSeesWhatWasWrittenLastBeforeItsCommit) {
  constexpr Size size{64, 64};
  const auto slow = computePipeline("k_slow");
  const auto add = computePipeline("k_add");
  const auto busy = makeTexture(PixelFormat::r16Float, size);
  auto source = makeTexture(PixelFormat::r16Float, size, TextureUsage::shaderRead, StorageMode::shared);
  const auto fill = [&](float value) { writeFloats(*source, std::vector<float>(size.width * size.height, value)); };
  std::vector<std::shared_ptr<Texture>> seen;
  for (int round = 0; round < 6; ++round) {
    fill(static_cast<float>(round));
    seen.push_back(makeTexture(PixelFormat::r16Float, size));
    Frame* frame = queue_->begin("still runs at the next write");
    frame->run({.pipeline = *slow, .bytes = floats({2000, 0}), .target = *busy});
    frame->run({.pipeline = *add, .images = {source.get()}, .bytes = floats({100}), .target = *seen.back()});
    frame->commit();
  }
  fill(9);
  source.reset();  // with its last write under way
  for (std::size_t round = 0; round < seen.size(); ++round) {
    EXPECT_THAT(readFloats(*seen[round]), Each(100.0F + static_cast<float>(round)));
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
    if (round % 2 == 0) passing.reset();  // before the commit
    frame->commit();
  }
  EXPECT_THAT(readFloats(*result), Each(111.0F));
}

TEST_F(ExecutionTest, AtMostThreeFramesAreInFlight) {
  const auto slow = computePipeline("k_slow");
  const auto texture = makeTexture(PixelFormat::r16Float, {64, 64});
  std::atomic<int> done{0};
  for (int number = 0; number < 12; ++number) {
    Frame* frame = queue_->begin("slow");
    EXPECT_LE(number - done, 2) << "once a fourth one is begun, at most two others can be unfinished";
    frame->run({.pipeline = *slow, .bytes = floats({1000, 0}), .target = *texture});
    frame->commit([&](const Completion&) { ++done; });
  }
  device_->waitIdle();
  EXPECT_EQ(done, 12);
}

TEST_F(ExecutionTest, HandlersAndTimesComeInTheOrderOfCommits) {
  const auto slow = computePipeline("k_slow");
  const auto texture = makeTexture(PixelFormat::r16Float, {64, 64});
  const auto other = device_->makeFrameQueue();
  std::vector<int> numbers;  // written on the device's thread, read after waitIdle()
  double end = 0;
  for (int number = 0; number < 9; ++number) {
    Frame* frame = (number % 3 == 0 ? other : queue_)->begin("frame");
    frame->run({.pipeline = *slow, .bytes = floats({1000, 0}), .target = *texture});
    frame->commit([&, number](const Completion& completion) {
      numbers.push_back(number);
      EXPECT_FALSE(completion.failed);
      EXPECT_GT(completion.gpuEnd, completion.gpuStart);
      EXPECT_GE(completion.gpuEnd, std::exchange(end, completion.gpuEnd));
    });
  }
  device_->waitIdle();
  EXPECT_THAT(numbers, testing::ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8));
}

}  // namespace
}  // namespace veloria::tests
