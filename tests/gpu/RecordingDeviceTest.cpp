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
  EXPECT_NE(device_->makePipeline(*library_, {"f_copy", "v_cover", PixelFormat::bgra8Unorm, 1}), copy);
  recorder_->log().clear();
  add.reset();
  copy.reset();
  computePipeline("k_add");
  renderPipeline("f_copy", PixelFormat::bgra8Unorm);
  EXPECT_EQ(recorder_->log().count(CallKind::makePipeline), 2U);
}

TEST_F(RecordingTest, WhatItCannotKnowItRefusesToTell) {
  const auto fresh = makeTexture(PixelFormat::r16Float, {2, 2});
  std::vector<std::byte> bytes(fresh->byteCount());
  EXPECT_THROW(fresh->read(bytes), RecordingError) << "never written";
  fresh->write(bytes);
  EXPECT_NO_THROW(fresh->read(bytes));
  runOne({.pipeline = *computePipeline("k_add"), .target = *fresh});
  EXPECT_THROW(fresh->read(bytes), RecordingError) << "maybe written by the function";
}

TEST_F(RecordingTest, ThingsOfOtherDevicesAreRefused) {
  RecordingDevice other({"k_add"});
  const auto foreign = other.makeTexture({PixelFormat::r16Float, {2, 2}, TextureUsage::shaderRead, {}, "foreign"});
  const auto own = makeTexture(PixelFormat::r16Float, {2, 2});
  Frame* frame = queue_->begin("frame");
  EXPECT_THROW(frame->run({.pipeline = *computePipeline("k_add"), .images = {foreign.get()}, .target = *own}),
               RecordingError);
}

}  // namespace

}  // namespace veloria::gpu::recording
