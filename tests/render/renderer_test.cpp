// What the renderer asks of the GPU, frame by frame, written down by the recording device.

#include <gmock/gmock.h>

#include <future>

#include "gpu/recording/RecordingDevice.h"
#include "render/NimbraRenderer.h"

namespace veloria::tests {
namespace {

using gpu::recording::RecordedPass;
using gpu::recording::RecordingDevice;
using gpu::recording::RecordingSurface;

const std::set<std::string> allFunctions{
    "k_advect_velocity", "k_curl",       "k_forces", "k_divergence", "k_jacobi", "k_project", "k_advect_dye",
    "k_clear",           "v_fullscreen", "f_nimbra", "f_down",       "f_blur",   "f_mask",    "f_final"};

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
    device_.log = {};
    now_ += seconds;
    renderer_.draw(target_);
  }
  std::vector<RecordedPass> all(const std::string& function) {
    std::vector<RecordedPass> found = device_.log.passes;
    std::erase_if(found, [&](const RecordedPass& pass) { return pass.function != function; });
    return found;
  }
  RecordedPass only(const std::string& function) {
    const std::vector<RecordedPass> found = all(function);
    EXPECT_EQ(found.size(), 1U) << function;
    return found.empty() ? RecordedPass{} : found.front();
  }
  RenderParams composite() { return only("f_final").as<BandBlock>().params; }

  double now_ = 100;
  RecordingDevice device_{allFunctions};
  std::unique_ptr<gpu::Library> library_ = device_.makeLibrary({});
  RecordingSurface surface_{device_};
  SurfaceTarget target_{surface_};
  RenderStats stats_{[this] { return now_; }};
  NimbraRenderer renderer_{device_, *library_, stats_, [this] { return now_; }};
};

TEST_F(RendererTest, TheFirstFrameClearsStepsDrawsAndPresents) {
  draw();
  std::string passes;
  for (const RecordedPass& pass : device_.log.passes) passes += pass.function + " ";
  std::string expected;
  for (int field = 0; field < 8; ++field) expected += "k_clear ";
  EXPECT_EQ(passes, expected +
                        "k_advect_velocity k_curl k_forces k_divergence k_jacobi k_jacobi k_jacobi k_project "
                        "k_advect_dye f_nimbra f_down f_blur f_blur f_final ");
  EXPECT_EQ(device_.log.presents, 1U);
  EXPECT_EQ(device_.log.commits, 1U);
  draw();
  EXPECT_TRUE(all("k_clear").empty()) << "cleared once only";
  EXPECT_EQ(device_.log.textures + device_.log.pipelines, 0U) << "nothing is made anew";
}

TEST_F(RendererTest, PassesReadWhatTheOnesBeforeWrote) {
  draw();
  draw();
  const RecordedPass advect = only("k_advect_velocity");
  const RecordedPass forces = only("k_forces");
  const RecordedPass divergence = only("k_divergence");
  const RecordedPass project = only("k_project");
  const RecordedPass dye = only("k_advect_dye");
  const RecordedPass band = only("f_nimbra");
  EXPECT_NE(advect.texture(0), advect.target);
  EXPECT_EQ(only("k_curl").texture(0), advect.target);
  EXPECT_EQ(forces.textures, (std::vector{advect.target, only("k_curl").target, dye.texture(0)}));
  EXPECT_EQ(forces.target, advect.texture(0));
  EXPECT_EQ(divergence.texture(0), forces.target);
  EXPECT_EQ(project.texture(0), forces.target);
  EXPECT_EQ(project.target, advect.target);
  EXPECT_EQ(dye.texture(1), project.target);
  EXPECT_EQ(band.textures, (std::vector{dye.target, project.target}));

  const std::vector<RecordedPass> jacobi = all("k_jacobi");
  ASSERT_EQ(jacobi.size(), 3U);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(jacobi[i].texture(1), divergence.target);
    EXPECT_EQ(jacobi[i].target, i < 2 ? jacobi[i + 1].texture(0) : project.texture(1));
  }
  const std::vector<RecordedPass> blurs = all("f_blur");
  ASSERT_EQ(blurs.size(), 2U);
  EXPECT_EQ(only("f_down").texture(0), band.target);
  EXPECT_EQ(blurs[0].texture(0), only("f_down").target);
  EXPECT_EQ(blurs[1].texture(0), blurs[0].target);
  EXPECT_EQ(only("f_final").textures, (std::vector{band.target, blurs[1].target, band.target}));
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(blurs[i].as<BlurParams>().dirX, i == 0 ? 1 : 0);
    EXPECT_EQ(blurs[i].as<BlurParams>().dirY, i == 0 ? 0 : 1);
  }

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
  for (const auto& [amount, passes] : {std::pair{0.001, 0U}, {-1.0, 0U}, {0.0011, 2U}}) {
    renderer_.config.glowAmount = amount;
    draw();
    EXPECT_EQ(all("f_blur").size(), passes);
    EXPECT_EQ(only("f_final").texture(1) == only("f_final").texture(0), passes == 0);
  }
}

TEST_F(RendererTest, TheBarsTextIsSoughtOnlyWhenItsPictureOrASettingChanges) {
  renderer_.config.preserveMenuBarText = true;
  renderer_.backdrop = std::make_shared<TextureBox>();
  const auto picture = device_.makeTexture(
      {gpu::PixelFormat::bgra8Unorm, {1920, 32}, gpu::TextureUsage::shaderRead, gpu::StorageMode::shared, "bar"});
  const std::pair<std::function<void()>, std::size_t> changes[] = {
      {[] {}, 0},  // no picture yet
      {[&] { renderer_.backdrop->store(picture); }, 1},
      {[] {}, 0},
      {[&] { renderer_.backdrop->store(picture); }, 1},  // a new one in the same texture
      {[&] { renderer_.config.textBlur += 1; }, 1},
      {[&] {
         surface_.configure({960, 32}, gpu::PixelFormat::bgra8Unorm);
       },
       1},
      {[&] { renderer_.backdrop->store(nullptr); }, 0}};
  std::size_t row = 0;
  for (const auto& [change, count] : changes) {
    SCOPED_TRACE(row++);
    change();
    draw();
    const auto sought = all("f_mask");
    ASSERT_EQ(sought.size(), count);
    if (count == 0) continue;
    EXPECT_EQ(sought[0].texture(0), picture.get());
    EXPECT_EQ(only("f_final").texture(2), sought[0].target);
  }
}

TEST_F(RendererTest, FramesThatCantBeDrawnAreCountedAndLeaveTheClockAlone) {
  draw();
  const double time = renderer_.simTime();
  surface_.available = false;
  draw();
  EXPECT_EQ(renderer_.missedFrames(), 1);
  EXPECT_EQ(renderer_.simTime(), time);
  EXPECT_EQ(device_.log.frames, 0U);
  surface_.available = true;
  device_.failures.frame = true;
  for (int i = 0; i < 5; ++i) draw();  // more than two: the in-flight count must have been given back
  EXPECT_EQ(renderer_.frameCount(), 1);
  device_.failures.frame = false;
  draw();
  EXPECT_EQ(renderer_.frameCount(), 2);
  EXPECT_EQ(renderer_.missedFrames(), 1);
}

TEST_F(RendererTest, TheCompositeFollowsTheTargetsFormat) {
  draw();
  surface_.configure({1920, 32}, gpu::PixelFormat::rgba16Float);
  draw();
  EXPECT_EQ(device_.log.pipelines, 1U);
  device_.failures.makePipeline = true;
  surface_.configure({1920, 32}, gpu::PixelFormat::bgra8Unorm);
  draw();
  EXPECT_EQ(device_.log.commits, 0U) << "no composite, no frame";
  device_.failures.makePipeline = false;
  draw();
  EXPECT_EQ(device_.log.commits, 1U) << "tried again with the next frame";
}

TEST_F(RendererTest, NoMoreThanTwoFramesAreInFlight) {
  device_.completesAtOnce = false;
  device_.completion.gpuStart = 5;
  device_.completion.gpuEnd = 5.004;
  draw();
  draw();
  EXPECT_EQ(device_.inFlight.size(), 2U);
  auto third = std::async(std::launch::async, [this] { draw(); });
  EXPECT_EQ(third.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  device_.completeNext();
  third.get();
  EXPECT_EQ(device_.inFlight.size(), 2U);
  device_.waitIdle();
  EXPECT_NEAR(stats_.figures().gpuMsAvg, 4, 1e-6);
  EXPECT_NEAR(renderer_.figures().gpuMsAvg, 4, 1e-6);
}

}  // namespace
}  // namespace veloria::tests
