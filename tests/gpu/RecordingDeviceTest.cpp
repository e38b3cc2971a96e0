#include "gpu/recording/RecordingDevice.h"

#include "GpuTest.h"

namespace veloria::gpu::recording {

namespace {

class RecordingTest : public test::GpuTest {
 protected:
  void SetUp() override {
    GpuTest::SetUp();
    recorder_ = static_cast<RecordingDevice*>(device_.get());
  }
  RecordingDevice* recorder_ = nullptr;
};

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

}  // namespace

}  // namespace veloria::gpu::recording
