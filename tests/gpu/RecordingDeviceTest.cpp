#include "gpu/recording/RecordingDevice.h"

#include "GpuTest.h"

namespace veloria::gpu::recording {

namespace {

using ::testing::ElementsAre;
using ::testing::Property;

class RecordingTest : public test::GpuTest {
 protected:
  void SetUp() override {
    GpuTest::SetUp();
    recorder_ = static_cast<RecordingDevice*>(device_.get());
  }
  RecordingDevice* recorder_ = nullptr;
};

std::vector<std::byte> numbers(std::initializer_list<float> values) {
  const auto bytes = std::as_bytes(std::span(values.begin(), values.size()));
  return {bytes.begin(), bytes.end()};
}

TEST_F(RecordingTest, APipelineInUseIsSharedByAllWhoAskForTheSame) {
  auto add = computePipeline("k_add");
  auto copy = renderPipeline("f_copy", PixelFormat::bgra8Unorm);
  EXPECT_EQ(computePipeline("k_add"), add);
  EXPECT_EQ(renderPipeline("f_copy", PixelFormat::bgra8Unorm), copy);
  EXPECT_NE(renderPipeline("f_copy", PixelFormat::rgba16Float), copy);
  EXPECT_NE(device_->makeRenderPipeline(*library_, {"v_cover", "f_copy", PixelFormat::bgra8Unorm, "", 1}), copy);
  recorder_->log().clear();
  add.reset();
  copy.reset();
  computePipeline("k_add");
  renderPipeline("f_copy", PixelFormat::bgra8Unorm);
  EXPECT_EQ(recorder_->log().count(CallKind::makeComputePipeline), 1U);
  EXPECT_EQ(recorder_->log().count(CallKind::makeRenderPipeline), 1U);
}

TEST_F(RecordingTest, CallsAreWrittenDownAsTheyWere) {
  const auto add = computePipeline("k_add");
  const auto copy = renderPipeline("f_copy", PixelFormat::bgra8Unorm);
  const auto a = device_->makeTexture({PixelFormat::r16Float, {5, 6}, TextureUsage::shaderRead, {}, "a"});
  const auto b = device_->makeTexture({PixelFormat::r16Float, {5, 6}, TextureUsage::shaderWrite, {}, "b"});
  RecordingSurface surface(*recorder_);
  surface.configure({30, 4}, PixelFormat::bgra8Unorm);
  Drawable* drawable = surface.nextDrawable();
  ASSERT_NE(drawable, nullptr);
  recorder_->log().clear();

  run([&](CommandBuffer& buffer) {
    ComputeEncoder* compute = buffer.computeEncoder("step");
    compute->setPipeline(*add);
    compute->setTexture(*b, 1);
    compute->setTexture(*a, 0);
    std::vector<std::byte> bytes = numbers({1.5F});
    compute->setBytes(bytes, 0);
    bytes = numbers({9});  // a copy was taken
    compute->dispatchThreads(5, 6);
    compute->setBytes(numbers({2.5F}), 0);
    compute->dispatchThreads(3, 1);
    compute->endEncoding();
    drawOver(buffer, drawable->texture(), *copy, a.get(), {7, 8});
    buffer.present(*drawable);
  });

  EXPECT_THAT(recorder_->log().functions(), ElementsAre("k_add", "k_add", "f_copy"));
  const std::vector<Call> dispatches = recorder_->log().ofKind(CallKind::dispatch);
  EXPECT_EQ(dispatches[0].label, "step");
  EXPECT_EQ(dispatches[0].texture(0), a.get());
  EXPECT_EQ(dispatches[0].texture(1), b.get());
  EXPECT_EQ(dispatches[0].texture(2), nullptr);
  EXPECT_EQ(dispatches[0].textures[1].label, "b");
  EXPECT_EQ(dispatches[0].as<float>(), 1.5F);
  EXPECT_EQ(dispatches[0].threads, (Size{5, 6}));
  EXPECT_EQ(dispatches[1].as<float>(), 2.5F);
  EXPECT_THROW(dispatches[1].as<double>(), std::length_error);
  const Call draw = recorder_->log().ofKind(CallKind::draw).at(0);
  EXPECT_EQ(draw.target, &drawable->texture());
  EXPECT_EQ(draw.vertexFunction, "v_cover");
  EXPECT_EQ(draw.vertexCount, 3U);
  EXPECT_EQ(recorder_->log().ofKind(CallKind::present).at(0).drawable, drawable);
  EXPECT_EQ(surface.presentCount(), 1U);

  std::vector<std::string> kinds;
  for (const Call& call : recorder_->log().calls()) kinds.emplace_back(callKindName(call.kind));
  EXPECT_THAT(kinds, ElementsAre("commandBuffer", "computeEncoder", "dispatch", "dispatch", "endEncoding",
                                 "renderEncoder", "draw", "endEncoding", "present", "commit", "wait"));
}

TEST_F(RecordingTest, WhatItCannotKnowItRefusesToTell) {
  const auto fresh = makeTexture(PixelFormat::r16Float, {2, 2});
  std::vector<std::byte> bytes(fresh->byteCount());
  EXPECT_THROW(fresh->read(bytes), RecordingError) << "never written";
  fresh->write(bytes);
  EXPECT_NO_THROW(fresh->read(bytes));
  const auto add = computePipeline("k_add");
  runCompute([&](ComputeEncoder& encoder) {
    encoder.setPipeline(*add);
    encoder.setTexture(*fresh, 1);
    encoder.dispatchThreads(2, 2);
  });
  EXPECT_THROW(fresh->read(bytes), RecordingError) << "maybe written by the function";

  const auto target = makeTexture(PixelFormat::rgba16Float, {2, 2}, TextureUsage::renderTarget);
  run([&](CommandBuffer& buffer) { buffer.renderEncoder(*target, "clear")->endEncoding(); });
  EXPECT_THAT(test::readFloats(*target), ::testing::Each(0.0F));
  const auto copy = renderPipeline("f_copy", PixelFormat::rgba16Float);
  run([&](CommandBuffer& buffer) { drawOver(buffer, *target, *copy, nullptr); });
  EXPECT_THROW(test::readFloats(*target), RecordingError);
}

TEST_F(RecordingTest, ThingsOfOtherDevicesAreRefused) {
  RecordingDevice other({"k_add"});
  const auto foreign = other.makeTexture({PixelFormat::r16Float, {2, 2}, TextureUsage::shaderRead, {}, "foreign"});
  CommandBuffer* buffer = queue_->commandBuffer();
  ComputeEncoder* encoder = buffer->computeEncoder("step");
  EXPECT_THROW(encoder->setTexture(*foreign, 0), RecordingError);
  buffer->discard();
}

TEST_F(RecordingTest, CompletionCanBeHeldBack) {
  recorder_->setCompletesAtOnce(false);
  recorder_->setCompletion({.gpuStart = 1, .gpuEnd = 3, .failed = false, .passes = {}});
  std::vector<double> durations;
  for (int number = 0; number < 3; ++number) {
    CommandBuffer* buffer = queue_->commandBuffer();
    buffer->addCompletedHandler([&](const Completion& done) { durations.push_back(done.gpuEnd - done.gpuStart); });
    buffer->commit();
  }
  EXPECT_EQ(recorder_->inFlight(), 3U);
  EXPECT_THROW(queue_->commandBuffer(), RecordingError) << "a device would wait for ever";
  EXPECT_TRUE(recorder_->completeNext());
  EXPECT_THAT(durations, ElementsAre(2));
  CommandBuffer* buffer = queue_->commandBuffer();
  ASSERT_NE(buffer, nullptr);
  buffer->discard();
  device_->waitIdle();
  EXPECT_EQ(durations.size(), 3U);
  EXPECT_FALSE(recorder_->completeNext());
}

}  // namespace

}  // namespace veloria::gpu::recording
