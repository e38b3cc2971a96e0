// What the renderer asks of the GPU, frame by frame, written down by the recording device.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <memory>
#include <span>

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

/// A surface as a frame target.
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
  RendererTest()
      : library_(device_.makeLibrary(std::as_bytes(std::span("library")))), surface_(device_), target_(surface_) {
    surface_.configure({1920, 32}, gpu::PixelFormat::bgra8Unorm);
    renderer_ = std::make_unique<NimbraRenderer>(device_, *library_, stats_, [this] { return now_; });
    renderer_->config.pressureIterations = 3;
  }

  void draw(double seconds = 1.0 / 60) {
    device_.log().clear();
    now_ += seconds;
    renderer_->draw(target_);
  }
  std::vector<std::string> functions() { return device_.log().functions(); }
  Call only(const std::string& function) {
    std::vector<Call> found;
    for (const Call& call : device_.log().calls()) {
      if (call.function == function && call.kind == CallKind::run) {
        found.push_back(call);
      }
    }
    EXPECT_EQ(found.size(), 1U) << function;
    return found.empty() ? Call{} : found.front();
  }

  double now_ = 100;
  RecordingDevice device_{allFunctions};
  std::unique_ptr<gpu::Library> library_;
  RecordingSurface surface_;
  SurfaceTarget target_;
  RenderStats stats_{[this] { return now_; }};
  std::unique_ptr<NimbraRenderer> renderer_;
};

TEST_F(RendererTest, firstFrameClearsStepsDrawsAndPresents) {
  draw();
  const std::vector<std::string> expected{
      "k_clear",           "k_clear",  "k_clear",  "k_clear",      "k_clear",  "k_clear",  "k_clear",  "k_clear",
      "k_advect_velocity", "k_curl",   "k_forces", "k_divergence", "k_jacobi", "k_jacobi", "k_jacobi", "k_project",
      "k_advect_dye",      "f_nimbra", "f_down",   "f_blur",       "f_blur",   "f_final"};
  EXPECT_EQ(functions(), expected);
  std::vector<std::string> labels;
  for (const Call& call : device_.log().ofKind(CallKind::run)) {
    if (labels.empty() || labels.back() != call.label) labels.push_back(call.label);
  }
  EXPECT_EQ(labels, (std::vector<std::string>{"fluid.clear", "fluid.step", "nimbra", "glow.down", "glow.blurH",
                                              "glow.blurV", "composite"}));
  EXPECT_EQ(surface_.presentCount(), 1U);
  EXPECT_EQ(device_.log().count(CallKind::commit), 1U);
  draw();
  EXPECT_EQ(functions().front(), "k_advect_velocity") << "cleared once only";
}

TEST_F(RendererTest, passesReadWhatTheOnesBeforeWrote) {
  draw();
  draw();
  const Call advect = only("k_advect_velocity");
  const Call curl = only("k_curl");
  const Call forces = only("k_forces");
  const Call divergence = only("k_divergence");
  const Call project = only("k_project");
  const Call dye = only("k_advect_dye");
  const Call band = only("f_nimbra");
  EXPECT_NE(advect.texture(0), advect.target);
  EXPECT_EQ(curl.texture(0), advect.target);
  EXPECT_EQ(forces.texture(0), advect.target);
  EXPECT_EQ(forces.texture(1), curl.target);
  EXPECT_EQ(forces.texture(2), dye.texture(0));
  EXPECT_EQ(forces.target, advect.texture(0));
  EXPECT_EQ(divergence.texture(0), forces.target);
  EXPECT_EQ(project.texture(0), forces.target);
  EXPECT_EQ(project.target, advect.target);
  EXPECT_EQ(dye.texture(1), project.target);
  EXPECT_EQ(band.texture(0), dye.target);
  EXPECT_EQ(band.texture(1), project.target);

  std::vector<Call> jacobi;
  for (const Call& call : device_.log().ofKind(CallKind::run)) {
    if (call.function.starts_with("k_")) {
      EXPECT_EQ(call.size, (gpu::Size{634, 32}));
    }
    if (call.function == "k_jacobi") jacobi.push_back(call);
  }
  ASSERT_EQ(jacobi.size(), 3U);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(jacobi[i].texture(1), divergence.target);
    EXPECT_NE(jacobi[i].texture(0), jacobi[i].target);
    if (i > 0) {
      EXPECT_EQ(jacobi[i].texture(0), jacobi[i - 1].target);
    }
  }
  EXPECT_EQ(project.texture(1), jacobi.back().target);
}

TEST_F(RendererTest, absurdIterationCountsAreBounded) {
  const auto count = [&](std::int64_t iterations) {
    renderer_->config.pressureIterations = iterations;
    draw();
    const auto names = functions();
    return std::count(names.begin(), names.end(), "k_jacobi");
  };
  EXPECT_EQ(count(0), 1);
  EXPECT_EQ(count(-9), 1);
  EXPECT_EQ(count(9'000'000'000'000'000'000), 200);
}

TEST_F(RendererTest, uniformsCarryTheGridTheTimeAndTheSceneSize) {
  renderer_->config.timeScale = 0.5;
  draw();
  auto sim = only("k_advect_dye").as<StepBlock>().params;
  EXPECT_EQ(sim.gridW, 634);
  EXPECT_EQ(sim.gridH, 32);
  EXPECT_FLOAT_EQ(sim.dt, 0.5F) << "the first frame is one 60 Hz frame long";
  draw(7);
  EXPECT_FLOAT_EQ(only("k_forces").as<StepBlock>().params.dt, 1.5F) << "a stall counts as 50 ms";
  draw(1e-5);
  EXPECT_FLOAT_EQ(only("k_forces").as<StepBlock>().params.dt, 0.125F);
  EXPECT_FLOAT_EQ(only("f_nimbra").as<BandBlock>().params.time,
                  static_cast<float>(0.5 * (1.0 / 60 + 0.05 + 1.0 / 240)));

  surface_.configure({1000, 800}, gpu::PixelFormat::bgra8Unorm);
  draw();
  EXPECT_EQ(renderer_->sceneScale(), 0.55);
  for (const char* pass : {"f_nimbra", "f_final"}) {
    EXPECT_EQ(only(pass).as<BandBlock>().params.targetW, 550) << pass;
    EXPECT_EQ(only(pass).as<BandBlock>().params.targetH, 440) << pass;
  }
  EXPECT_EQ(only("f_down").target->size(), (gpu::Size{137, 110}));
}

TEST_F(RendererTest, blurRunsAlongBothDirectionsWithACappedRadius) {
  renderer_->config.glowRadius = 1e9;
  draw();
  std::vector<BlurParams> blurs;
  for (const Call& call : device_.log().ofKind(CallKind::run)) {
    if (call.function == "f_blur") blurs.push_back(call.as<BlurParams>());
  }
  ASSERT_EQ(blurs.size(), 2U);
  EXPECT_EQ(blurs[0].dirX, 1);
  EXPECT_EQ(blurs[0].dirY, 0);
  EXPECT_EQ(blurs[1].dirX, 0);
  EXPECT_EQ(blurs[1].dirY, 1);
  EXPECT_EQ(blurs[0].radius, 16);
}

TEST_F(RendererTest, withoutGlowTheSceneStandsInForIt) {
  for (const double amount : {0.001, 0.0, -1.0}) {
    renderer_->config.glowAmount = amount;
    draw();
    const auto names = functions();
    EXPECT_EQ(std::count(names.begin(), names.end(), "f_down") + std::count(names.begin(), names.end(), "f_blur"), 0);
    const Call composite = only("f_final");
    EXPECT_EQ(composite.texture(1), composite.texture(0));
  }
  renderer_->config.glowAmount = 0.0011;
  draw();
  EXPECT_NE(only("f_final").texture(1), only("f_final").texture(0));
}

TEST_F(RendererTest, textMaskNeedsBothTheSettingAndAPicture) {
  renderer_->config.preserveMenuBarText = true;
  draw();
  EXPECT_EQ(only("f_final").as<BandBlock>().params.textMaskOn, 0);
  EXPECT_EQ(only("f_final").texture(2), only("f_final").texture(0));

  renderer_->backdrop = std::make_shared<TextureBox>();
  draw();
  EXPECT_EQ(only("f_final").as<BandBlock>().params.textMaskOn, 0);

  auto picture = device_.makeTexture({.format = gpu::PixelFormat::rgba8Unorm, .size = {8, 8}, .label = "bar"});
  renderer_->backdrop->store(picture);
  draw();
  EXPECT_EQ(only("f_final").as<BandBlock>().params.textMaskOn, 1);
  EXPECT_EQ(only("f_nimbra").as<BandBlock>().params.textMaskOn, 0);
  EXPECT_EQ(only("f_final").texture(2), picture.get());

  renderer_->config.preserveMenuBarText = false;
  draw();
  EXPECT_EQ(only("f_final").as<BandBlock>().params.textMaskOn, 0);
}

TEST_F(RendererTest, framesThatCantBeDrawnAreCountedAndLeaveTheClockAlone) {
  draw();
  EXPECT_EQ(renderer_->frameCount(), 1);
  const double time = renderer_->simTime();
  surface_.setAvailable(false);
  draw();
  EXPECT_EQ(renderer_->missedFrames(), 1);
  EXPECT_EQ(renderer_->frameCount(), 1);
  EXPECT_EQ(renderer_->simTime(), time);
  EXPECT_EQ(device_.log().count(CallKind::frame), 0U);
  surface_.setAvailable(true);
  draw();
  EXPECT_EQ(renderer_->frameCount(), 2);
}

TEST_F(RendererTest, nothingIsResizedForNothing) {
  draw();
  device_.log().clear();
  renderer_->resizeTargets({0, 32});
  renderer_->resizeTargets({1920, 0});
  renderer_->resizeTargets({1920, 32});
  EXPECT_EQ(device_.log().count(CallKind::makeTexture), 0U);
  renderer_->resizeTargets({1920, 40});
  EXPECT_EQ(device_.log().count(CallKind::makeTexture), 3U + 8U);
  EXPECT_EQ(stats_.figures().gridW, 634);
  EXPECT_EQ(stats_.figures().gridH, 40);
}

TEST_F(RendererTest, compositeFollowsTheTargetsFormat) {
  draw();
  draw();
  EXPECT_EQ(device_.log().count(CallKind::makePipeline), 0U);
  surface_.configure({1920, 32}, gpu::PixelFormat::rgba16Float);
  draw();
  EXPECT_EQ(device_.log().count(CallKind::makePipeline), 1U);

  device_.failures().makePipeline = true;
  surface_.configure({1920, 32}, gpu::PixelFormat::bgra8Unorm);
  draw();
  EXPECT_EQ(device_.log().count(CallKind::commit), 0U) << "no composite, no frame";
  EXPECT_EQ(renderer_->missedFrames(), 0);
  device_.failures().makePipeline = false;
  draw();
  EXPECT_EQ(device_.log().count(CallKind::commit), 1U) << "tried again with the next frame";
}

TEST_F(RendererTest, aMissingFunctionIsNamed) {
  for (const auto& name : allFunctions) {
    if (name == "f_final") continue;  // made with the first frame
    auto functions = allFunctions;
    functions.erase(name);
    RecordingDevice device(functions);
    const auto library = device.makeLibrary(std::as_bytes(std::span("library")));
    try {
      const NimbraRenderer renderer(device, *library, stats_, [] { return 0.0; });
      ADD_FAILURE() << name;
    } catch (const RendererError& error) {
      EXPECT_EQ(error.code(), RendererError::Code::missingFunction);
      EXPECT_EQ(std::string(error.what()), "Shader function '" + name + "' is missing from the Vulkan library.");
    }
  }
}

TEST_F(RendererTest, aFrameThatTheQueueDoesNotGiveIsDropped) {
  draw();
  device_.failures().frame = true;
  for (int i = 0; i < 5; ++i) draw();  // more than two: the in-flight count must have been given back
  EXPECT_EQ(renderer_->frameCount(), 1);
  device_.failures().frame = false;
  draw();
  EXPECT_EQ(renderer_->frameCount(), 2);
}

TEST_F(RendererTest, noMoreThanTwoFramesAreInFlight) {
  device_.setCompletesAtOnce(false);
  draw();
  draw();
  EXPECT_EQ(device_.inFlight(), 2U);
  auto third = std::async(std::launch::async, [this] { draw(); });
  EXPECT_EQ(third.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
  device_.completeNext();
  third.get();
  EXPECT_EQ(device_.inFlight(), 2U);
  device_.completeAll();
}

TEST_F(RendererTest, statisticsComeFromTheCompletion) {
  gpu::Completion completion;
  completion.gpuStart = 5;
  completion.gpuEnd = 5.004;
  device_.setCompletion(completion);
  draw();
  EXPECT_NEAR(stats_.figures().gpuMsAvg, 4, 1e-6);
}

}  // namespace
}  // namespace veloria::tests
