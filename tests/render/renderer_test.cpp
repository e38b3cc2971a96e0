// What the renderer asks of the GPU, frame by frame, written down by the recording device.

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <future>

#include "gpu/recording/RecordingDevice.h"
#include "render/NimbraRenderer.h"
#include "render/RendererError.h"

namespace veloria::tests {
namespace {

using gpu::recording::Call;
using gpu::recording::CallKind;
using gpu::recording::RecordingDevice;
using gpu::recording::RecordingSurface;

const std::set<std::string> allFunctions{
    "k_advect_velocity", "k_curl",       "k_forces", "k_divergence", "k_jacobi", "k_project", "k_advect_dye",
    "k_clear",           "v_fullscreen", "f_nimbra", "f_down",       "f_blur",   "f_final"};

class SurfaceTarget final : public FrameTarget {
 public:
  explicit SurfaceTarget(RecordingSurface& surface) : surface_(surface) {}
  gpu::Size drawableSize() const override { return surface_.size(); }
  gpu::PixelFormat colorPixelFormat() const override { return surface_.format(); }
  gpu::Drawable* currentDrawable() override { return surface_.nextDrawable(); }

 private:
  RecordingSurface& surface_;
};

class RendererTest : public testing::Test {
 protected:
  RendererTest() {
    surface_.configure({1920, 32}, gpu::PixelFormat::bgra8Unorm);
    renderer_.config.pressureIterations = 3;
  }

  void draw(double seconds = 1.0 / 60) {
    device_.log().clear();
    now_ += seconds;
    renderer_.draw(target_);
  }
  std::vector<Call> all(const std::string& function) {
    std::vector<Call> found = device_.log().passes();
    std::erase_if(found, [&](const Call& call) { return call.function != function; });
    return found;
  }
  Call only(const std::string& function) {
    const std::vector<Call> found = all(function);
    EXPECT_EQ(found.size(), 1U) << function;
    return found.empty() ? Call{} : found.front();
  }
  RenderParams composite() { return only("f_final").as<BandBlock>().params; }
  std::size_t count(CallKind kind) { return device_.log().count(kind); }

  double now_ = 100;
  RecordingDevice device_{allFunctions};
  std::unique_ptr<gpu::Library> library_ = device_.makeLibrary(std::as_bytes(std::span("library")));
  RecordingSurface surface_{device_};
  SurfaceTarget target_{surface_};
  RenderStats stats_{[this] { return now_; }};
  NimbraRenderer renderer_{device_, *library_, stats_, [this] { return now_; }};
};

TEST_F(RendererTest, TheFirstFrameClearsStepsDrawsAndPresents) {
  draw();
  std::string passes;
  for (const Call& call : device_.log().passes()) passes += call.label + ":" + call.function + " ";
  const std::string step = "fluid.step:k_";
  std::string expected;
  for (int field = 0; field < 8; ++field) expected += "fluid.clear:k_clear ";
  for (const char* kernel :
       {"advect_velocity", "curl", "forces", "divergence", "jacobi", "jacobi", "jacobi", "project", "advect_dye"}) {
    expected += step + kernel + " ";
  }
  EXPECT_EQ(passes,
            expected + "nimbra:f_nimbra glow.down:f_down glow.blurH:f_blur glow.blurV:f_blur composite:f_final ");
  EXPECT_EQ(count(CallKind::present), 1U);
  EXPECT_EQ(count(CallKind::commit), 1U);
  draw();
  EXPECT_TRUE(all("k_clear").empty()) << "cleared once only";
}

TEST_F(RendererTest, PassesReadWhatTheOnesBeforeWrote) {
  draw();
  draw();
  const Call advect = only("k_advect_velocity");
  const Call forces = only("k_forces");
  const Call divergence = only("k_divergence");
  const Call project = only("k_project");
  const Call dye = only("k_advect_dye");
  const Call band = only("f_nimbra");
  EXPECT_NE(advect.texture(0), advect.target);
  EXPECT_EQ(only("k_curl").texture(0), advect.target);
  EXPECT_EQ(forces.textures, (std::vector{advect.target, only("k_curl").target, dye.texture(0)}));
  EXPECT_EQ(forces.target, advect.texture(0));
  EXPECT_EQ(divergence.texture(0), forces.target);
  EXPECT_EQ(project.texture(0), forces.target);
  EXPECT_EQ(project.target, advect.target);
  EXPECT_EQ(dye.texture(1), project.target);
  EXPECT_EQ(band.textures, (std::vector{dye.target, project.target}));

  const std::vector<Call> jacobi = all("k_jacobi");
  ASSERT_EQ(jacobi.size(), 3U);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(jacobi[i].texture(1), divergence.target);
    EXPECT_EQ(jacobi[i].target, i < 2 ? jacobi[i + 1].texture(0) : project.texture(1));
  }
  const std::vector<Call> blurs = all("f_blur");
  ASSERT_EQ(blurs.size(), 2U);
  EXPECT_EQ(only("f_down").texture(0), band.target);
  EXPECT_EQ(blurs[0].texture(0), only("f_down").target);
  EXPECT_EQ(blurs[1].texture(0), blurs[0].target);
  EXPECT_EQ(only("f_final").textures, (std::vector{band.target, blurs[1].target, band.target}));
  EXPECT_EQ(blurs[0].as<BlurParams>().dirX, 1);
  EXPECT_EQ(blurs[0].as<BlurParams>().dirY, 0);
  EXPECT_EQ(blurs[1].as<BlurParams>().dirX, 0);
  EXPECT_EQ(blurs[1].as<BlurParams>().dirY, 1);

  renderer_.config.glowRadius = 1e9;
  renderer_.config.pressureIterations = 9'000'000'000'000'000'000;
  draw();
  EXPECT_EQ(all("f_blur")[0].as<BlurParams>().radius, 16);
  EXPECT_EQ(all("k_jacobi").size(), 200U);
}

TEST_F(RendererTest, UniformsCarryTheGridTheTimeAndTheSceneSize) {
  renderer_.config.timeScale = 0.5;
  const auto sim = [&] { return only("k_forces").as<StepBlock>().params; };
  draw();
  EXPECT_EQ(sim().gridW, 634);
  EXPECT_EQ(sim().gridH, 32);
  EXPECT_FLOAT_EQ(sim().dt, 0.5F) << "the first frame is one 60 Hz frame long";
  draw(7);
  EXPECT_FLOAT_EQ(sim().dt, 1.5F) << "a stall counts as 50 ms";
  draw(1e-5);
  EXPECT_FLOAT_EQ(sim().dt, 0.125F);
  EXPECT_FLOAT_EQ(composite().time, static_cast<float>(0.5 * (1.0 / 60 + 0.05 + 1.0 / 240)));

  surface_.configure({1000, 800}, gpu::PixelFormat::bgra8Unorm);
  draw();
  EXPECT_EQ(only("f_nimbra").size, (gpu::Size{550, 440}));
  EXPECT_EQ(only("f_down").size, (gpu::Size{137, 110}));
  EXPECT_EQ(composite().targetW, 550);
  EXPECT_EQ(composite().targetH, 440);
}

TEST_F(RendererTest, WithoutGlowTheSceneStandsInForIt) {
  for (const auto& [amount, passes] : {std::pair{0.001, 0U}, {0.0, 0U}, {-1.0, 0U}, {0.0011, 2U}}) {
    renderer_.config.glowAmount = amount;
    draw();
    EXPECT_EQ(all("f_blur").size(), passes);
    EXPECT_EQ(all("f_down").size(), passes / 2);
    EXPECT_EQ(only("f_final").texture(1) == only("f_final").texture(0), passes == 0);
  }
}

TEST_F(RendererTest, TheTextMaskNeedsBothTheSettingAndAPicture) {
  const auto picture = device_.makeTexture({.format = gpu::PixelFormat::rgba8Unorm, .size = {8, 8}, .label = "bar"});
  renderer_.config.preserveMenuBarText = true;
  draw();
  EXPECT_EQ(composite().textMaskOn, 0);
  renderer_.backdrop = std::make_shared<TextureBox>();
  draw();
  EXPECT_EQ(composite().textMaskOn, 0);
  renderer_.backdrop->store(picture);
  draw();
  EXPECT_EQ(composite().textMaskOn, 1);
  EXPECT_EQ(only("f_nimbra").as<BandBlock>().params.textMaskOn, 0);
  EXPECT_EQ(only("f_final").texture(2), picture.get());
  renderer_.config.preserveMenuBarText = false;
  draw();
  EXPECT_EQ(composite().textMaskOn, 0);
}

TEST_F(RendererTest, FramesThatCantBeDrawnAreCountedAndLeaveTheClockAlone) {
  draw();
  const double time = renderer_.simTime();
  surface_.setAvailable(false);
  draw();
  EXPECT_EQ(renderer_.missedFrames(), 1);
  EXPECT_EQ(renderer_.frameCount(), 1);
  EXPECT_EQ(renderer_.simTime(), time);
  EXPECT_EQ(count(CallKind::frame), 0U);
  surface_.setAvailable(true);
  device_.failures().frame = true;
  for (int i = 0; i < 5; ++i) draw();  // more than two: the in-flight count must have been given back
  EXPECT_EQ(renderer_.frameCount(), 1);
  device_.failures().frame = false;
  draw();
  EXPECT_EQ(renderer_.frameCount(), 2);
  EXPECT_EQ(renderer_.missedFrames(), 1);
}

TEST_F(RendererTest, NothingIsResizedForNothing) {
  draw();
  device_.log().clear();
  for (const gpu::Size size : {gpu::Size{0, 32}, {1920, 0}, {1920, 32}}) renderer_.resizeTargets(size);
  EXPECT_EQ(count(CallKind::makeTexture), 0U);
  renderer_.resizeTargets({1920, 40});
  EXPECT_EQ(count(CallKind::makeTexture), 3U + 8U);
  EXPECT_EQ(stats_.figures().gridW, 634);
  EXPECT_EQ(stats_.figures().gridH, 40);
}

TEST_F(RendererTest, TheCompositeFollowsTheTargetsFormat) {
  draw();
  draw();
  EXPECT_EQ(count(CallKind::makePipeline), 0U);
  surface_.configure({1920, 32}, gpu::PixelFormat::rgba16Float);
  draw();
  EXPECT_EQ(count(CallKind::makePipeline), 1U);

  device_.failures().makePipeline = true;
  surface_.configure({1920, 32}, gpu::PixelFormat::bgra8Unorm);
  draw();
  EXPECT_EQ(count(CallKind::commit), 0U) << "no composite, no frame";
  EXPECT_EQ(renderer_.missedFrames(), 0);
  device_.failures().makePipeline = false;
  for (const auto format : {gpu::PixelFormat::rgba16Float, gpu::PixelFormat::bgra8Unorm}) {
    surface_.configure({1920, 32}, format);
    draw();
    EXPECT_EQ(count(CallKind::commit), 1U) << "tried again with the next frame";
  }
}

TEST_F(RendererTest, AMissingFunctionIsNamed) {
  for (const auto& name : allFunctions) {
    if (name == "f_final") continue;  // made with the first frame
    auto functions = allFunctions;
    functions.erase(name);
    RecordingDevice device(functions);
    const auto library = device.makeLibrary(std::as_bytes(std::span("library")));
    EXPECT_THAT(
        [&] { NimbraRenderer(device, *library, stats_, [] { return 0.0; }); },
        testing::ThrowsMessage<RendererError>("Shader function '" + name + "' is missing from the Vulkan library."));
  }
}

TEST_F(RendererTest, NoMoreThanTwoFramesAreInFlight) {
  device_.setCompletesAtOnce(false);
  gpu::Completion completion;
  completion.gpuStart = 5;
  completion.gpuEnd = 5.004;
  device_.setCompletion(completion);
  draw();
  draw();
  EXPECT_EQ(device_.inFlight(), 2U);
  auto third = std::async(std::launch::async, [this] { draw(); });
  EXPECT_EQ(third.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  device_.completeNext();
  third.get();
  EXPECT_EQ(device_.inFlight(), 2U);
  device_.completeAll();
  EXPECT_NEAR(stats_.figures().gpuMsAvg, 4, 1e-6);
  EXPECT_NEAR(renderer_.figures().gpuMsAvg, 4, 1e-6);
}

}  // namespace
}  // namespace veloria::tests
