// Each kernel against what it should compute, worked out on the CPU.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>

#include "GpuTest.h"
#include "render/FluidSim.h"
#include "render/Uniforms.h"

namespace veloria::tests {
namespace {

// Neither is a multiple of the group size.
constexpr std::int64_t W = 75;
constexpr std::int64_t H = 37;
constexpr double frame = 1.0 / 60;

/// A texture's content as floats: `channels` a texel, rows from the top.
struct Field {
  std::int64_t channels = 0;
  std::vector<float> values;

  explicit Field(std::int64_t count, float value = 0) : channels(count) {
    values.assign(static_cast<std::size_t>(W * H * count), value);
  }
  float& at(std::int64_t x, std::int64_t y, std::int64_t channel = 0) {
    return values[static_cast<std::size_t>((y * W + x) * channels + channel)];
  }
  /// The value at the nearest texel inside.
  float clamped(std::int64_t x, std::int64_t y, std::int64_t channel = 0) const {
    const std::int64_t index = (std::clamp<std::int64_t>(y, 0, H - 1) * W + std::clamp<std::int64_t>(x, 0, W - 1));
    return values[static_cast<std::size_t>(index * channels + channel)];
  }
  /// Fills one channel with `value(x, y)`.
  template <typename Value>
  Field& fill(std::int64_t channel, Value value) {
    for (std::int64_t i = 0; i < W * H; ++i) at(i % W, i / W, channel) = value(i % W, i / W);
    return *this;
  }
  double mean(std::int64_t channel) const {
    double sum = 0;
    for (std::int64_t i = 0; i < W * H; ++i) sum += clamped(i % W, i / W, channel);
    return sum / (W * H);
  }
};

/// A field of long waves; its values lie within about `size`.
Field smoothField(std::int64_t channels, float size, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> phase(0, 6.28F);
  Field field(channels);
  for (std::int64_t c = 0; c < channels; ++c) {
    for (int wave = 1; wave <= 3; ++wave) {
      const float px = phase(random);
      const float py = phase(random);
      field.fill(c, [&](std::int64_t x, std::int64_t y) {
        return field.at(x, y, c) + size / 2 / static_cast<float>(wave) *
                                       std::sin(6.28F * static_cast<float>(wave * x) / W + px) *
                                       std::sin(6.28F * static_cast<float>(wave * y) / H + py);
      });
    }
  }
  return field;
}

double rms(const std::vector<float>& values) {
  double sum = 0;
  for (const float v : values) sum += double{v} * v;
  return std::sqrt(sum / static_cast<double>(values.size()));
}

bool allFinite(const std::vector<float>& values) {
  return std::ranges::all_of(values, [](float v) { return std::isfinite(v); });
}

Field divergenceOf(const Field& v) {
  return Field(1).fill(0, [&](std::int64_t x, std::int64_t y) {
    const float below = y + 1 == H ? -v.clamped(x, y, 1) : v.clamped(x, y + 1, 1);
    const float above = y == 0 ? -v.clamped(x, y, 1) : v.clamped(x, y - 1, 1);
    return 0.5F * (v.clamped(x + 1, y, 0) - v.clamped(x - 1, y, 0) + below - above);
  });
}

void expectNear(const Field& actual, const Field& expected, float tolerance) {
  ASSERT_EQ(actual.values.size(), expected.values.size());
  float worst = 0;
  for (std::size_t i = 0; i < actual.values.size(); ++i) {
    worst = std::max(worst, std::fabs(actual.values[i] - expected.values[i]));
  }
  EXPECT_LE(worst, tolerance);
}

class Kernel : public GpuTest {
 protected:
  void TearDown() override {
    pipelines_.clear();
    GpuTest::TearDown();
  }

  static constexpr gpu::PixelFormat formats[] = {gpu::PixelFormat::invalid, gpu::PixelFormat::r16Float,
                                                 gpu::PixelFormat::rg16Float, gpu::PixelFormat::invalid,
                                                 gpu::PixelFormat::rgba16Float};

  std::shared_ptr<gpu::Texture> blank(std::int64_t channels) { return makeTexture(formats[channels], {W, H}); }
  std::shared_ptr<gpu::Texture> upload(const Field& field) {
    auto texture = blank(field.channels);
    writeFloats(*texture, field.values);
    return texture;
  }
  static Field download(const gpu::Texture& texture) {
    Field field(static_cast<std::int64_t>(gpu::bytesPerPixel(texture.format()) / 2));
    field.values = readFloats(texture);
    return field;
  }

  /// Runs a function with these fields in the order of its bindings; returns its target, of `channels`.
  Field run(const std::string& function, std::int64_t channels, const std::vector<Field>& fields,
            const SimParams& params = {}) {
    auto& pipeline = pipelines_[function];
    if (pipeline == nullptr) pipeline = computePipeline(function);
    const StepBlock block{params};
    const auto target = upload(Field(channels, 7));
    std::vector<std::shared_ptr<gpu::Texture>> inputs;
    for (const Field& field : fields) inputs.push_back(upload(field));
    gpu::Pass pass{.pipeline = *pipeline, .label = function.c_str(), .target = *target};
    const bool takesParams = function.starts_with("k_advect") || function == "k_forces";
    if (takesParams) pass.bytes = std::as_bytes(std::span(&block, 1));
    auto image = pass.images.begin();
    for (const auto& input : inputs) {
      const bool sampled = input == inputs.front() && function.starts_with("k_advect");
      (sampled ? pass.textures[0] : *image++) = input.get();
    }
    runOne(pass);
    return download(*target);
  }

  /// k_forces on this velocity, with no vorticity to confine and this dye everywhere.
  Field forced(const Field& velocity, const SimParams& params, float dyeAmount = 0) {
    return run("k_forces", 2, {velocity, Field(1), Field(4, dyeAmount)}, params);
  }

  /// Parameters that do nothing.
  static SimParams still() {
    SimParams params;
    params.gridW = W;
    params.gridH = H;
    params.dt = 1;
    params.velDissipation = 1;
    params.dyeDissipation = 1;
    params.curlScale = 2.4F;
    params.curlOctaves = 3;
    params.emitHeight = 0.45F;
    params.emitScale = 2.4F;
    params.palette.fill({0.5F, 0.5F, 0.5F});
    return params;
  }

  std::map<std::string, std::shared_ptr<gpu::Pipeline>> pipelines_;
};

TEST_F(Kernel, ClearZeroesEveryFormat) {
  for (const int channels : {1, 2, 4}) EXPECT_EQ(rms(run("k_clear", channels, {}).values), 0);
}

TEST_F(Kernel, DivergenceAndCurlAreCentralDifferences) {
  const Field v = smoothField(2, 2, 7);
  expectNear(run("k_divergence", 1, {v}), divergenceOf(v), 2e-3F);
  expectNear(run("k_curl", 1, {v}),
             Field(1).fill(0,
                           [&](std::int64_t x, std::int64_t y) {
                             return 0.5F * (v.clamped(x + 1, y, 1) - v.clamped(x - 1, y, 1) - v.clamped(x, y + 1, 0) +
                                            v.clamped(x, y - 1, 0));
                           }),
             2e-3F);
}

TEST_F(Kernel, JacobiSolvesOneStepWithOpenSidesAndClosedWalls) {
  const Field p = smoothField(1, 4, 3);
  const Field d = smoothField(1, 1, 4);
  const Field expected = Field(1).fill(0, [&](std::int64_t x, std::int64_t y) {
    const float right = x + 1 < W ? p.clamped(x + 1, y) : 0;
    const float left = x > 0 ? p.clamped(x - 1, y) : 0;
    return (right + left + p.clamped(x, y + 1) + p.clamped(x, y - 1) - d.clamped(x, y)) * 0.2499F;
  });
  expectNear(run("k_jacobi", 1, {p, d}), expected, 4e-3F);
}

TEST_F(Kernel, ProjectionTakesMostOfTheDivergenceAway) {
  Field v = smoothField(2, 2, 11);
  v.fill(1, [&](std::int64_t x, std::int64_t y) {  // nothing flows through the walls to begin with
    return v.at(x, y, 1) * std::sin(3.14159F * (static_cast<float>(y) + 0.5F) / H);
  });
  const Field divergence = run("k_divergence", 1, {v});
  Field pressure(1);
  for (int i = 0; i < 400; ++i) pressure = run("k_jacobi", 1, {pressure, divergence});
  EXPECT_GT(rms(divergence.values), 0.05);
  EXPECT_LT(rms(run("k_divergence", 1, {run("k_project", 2, {v, pressure})}).values), rms(divergence.values) / 6)
      << "400 iterations leave less than a sixth";
}

TEST_F(Kernel, AdvectionConservesAConstantAndDampsIt) {
  SimParams params = still();
  const Field flow = smoothField(2, 3, 5);
  const Field constant(4, 0.75F);
  expectNear(run("k_advect_dye", 4, {constant, flow}, params), constant, 1e-3F);
  params.dt = 3;
  params.dyeDissipation = 0.9F;
  EXPECT_NEAR(run("k_advect_dye", 4, {constant, flow}, params).at(20, 20, 3), 0.75 * std::pow(0.9, 3), 1e-3);

  Field uniform(2, 1.5F);
  uniform.fill(1, [](auto, auto) { return -0.5F; });
  expectNear(run("k_advect_velocity", 2, {uniform}, params), uniform, 1e-3F);
  params.velDissipation = 0.9F;
  EXPECT_NEAR(run("k_advect_velocity", 2, {uniform}, params).at(20, 20, 0), 1.5 * std::pow(0.9, 3), 1e-3);
}

TEST_F(Kernel, AdvectionMovesADotByDtTimesVelocity) {
  Field dot(4);
  dot.at(30, 15, 3) = 1;
  Field flow(2, 2);
  flow.fill(1, [](auto, auto) { return -1.5F; });
  SimParams params = still();
  params.dt = 2;
  Field moved = run("k_advect_dye", 4, {dot, flow}, params);
  EXPECT_NEAR(moved.at(34, 12, 3), 1, 2e-3);  // x + 2 x 2 to the right, 2 x 1.5 upwards
  moved.at(34, 12, 3) = 0;
  EXPECT_LT(rms(moved.values), 1e-4);
}

TEST_F(Kernel, AdvectionKeepsEdgesAndAddsNothing) {
  Field curtain(4);
  curtain.fill(3, [](std::int64_t x, auto) { return x >= 8 && x < 20 ? 1.0F : 0.0F; });
  Field flow(2);
  flow.fill(0, [](auto, auto) { return 0.3F; });
  for (int i = 0; i < 60; ++i) curtain = run("k_advect_dye", 4, {curtain, flow}, still());  // 18 cells
  int soft = 0;
  for (std::int64_t x = 0; x < W; ++x) {
    const float a = curtain.at(x, H / 2, 3);
    EXPECT_GE(a, 0);
    EXPECT_LE(a, 1);
    soft += a > 0.05F && a < 0.95F ? 1 : 0;
  }
  EXPECT_GT(curtain.at(32, H / 2, 3), 0.9F) << "its middle has moved by 18 cells";
  EXPECT_LT(soft, 18) << "cells of both edges; a plain step leaves about 24, and no 0.9 in the middle";
}

TEST_F(Kernel, EmissionIsBornInTheBandAndStopsWhenFull) {
  SimParams params = still();
  params.emitRate = 2.2F;
  params.emitCenter = 0.45F;
  params.emitThreshold = 0.2F;
  params.paletteSpread = 1;
  params.palette.fill({1, 0, 0});
  Field light(4);
  for (int i = 0; i < 600; ++i) light = run("k_advect_dye", 4, {light, Field(2)}, params);
  float most = 0;
  for (std::size_t i = 0; i < light.values.size(); i += 4) {
    most = std::max(most, light.values[i + 3]);
    ASSERT_NEAR(light.values[i], light.values[i + 3], 0.03F);  // palette red only
    ASSERT_EQ(light.values[i + 1], 0);
  }
  EXPECT_GT(most, 0.5F);
  EXPECT_LE(most, 2.4F);  // what a full source holds
}

TEST_F(Kernel, CurlNoiseHasNoDivergence) {
  SimParams params = still();
  params.dt = 1e-4F;
  const Field v = smoothField(2, 1, 9);
  expectNear(forced(v, params), v, 1e-3F);  // no force, and too short for the wind to pull at it

  params.dt = 1e-3F;
  params.curlStrength = 3e5F;  // so weak that no peak meets the speed limit
  const Field stirred = forced(Field(2), params);
  const Field d = divergenceOf(stirred);
  double inside = 0;
  for (std::int64_t y = 1; y + 1 < H; ++y) {
    for (std::int64_t x = 1; x + 1 < W; ++x) inside = std::max(inside, double{std::fabs(d.clamped(x, y))});
  }
  EXPECT_GT(rms(stirred.values), 0.1);
  EXPECT_LT(inside, 4e-3 * rms(stirred.values)) << "what half floats round off, no more";
}

TEST_F(Kernel, ForcesPushTheWayTheyShould) {
  const Field rest(2);
  SimParams wind = still();
  wind.flowSpeed = 2;
  EXPECT_GT(forced(rest, wind).mean(0), 1e-4);
  wind.flowSpeed = -2;
  EXPECT_LT(forced(rest, wind).mean(0), -1e-4);

  SimParams lift = still();
  lift.dt = 10;
  lift.buoyancy = 4;
  EXPECT_LT(forced(rest, lift, 1).mean(1), -1e-3);  // rows grow downwards: up is negative
  EXPECT_EQ(forced(rest, lift, 0).mean(1), 0);

  SimParams shear = still();
  shear.dt = 10;
  shear.flowShear = 8;
  const Field sheared = forced(rest, shear);
  EXPECT_NEAR(sheared.mean(0), 0, 1e-3);
  EXPECT_GT(rms(sheared.values), 1e-3);
}

TEST_F(Kernel, VorticityConfinementFollowsItsFormula) {
  const Field w = download(*upload(smoothField(1, 1, 21)));  // rounded: the direction hangs on small differences
  SimParams params = still();
  params.dt = 2;
  params.vorticity = 3;
  Field expected(2);
  for (std::int64_t i = 0; i < W * H; ++i) {
    const std::int64_t x = i % W, y = i / W;
    const float gx = 0.5F * (std::fabs(w.clamped(x + 1, y)) - std::fabs(w.clamped(x - 1, y)));
    const float gy = 0.5F * (std::fabs(w.clamped(x, y + 1)) - std::fabs(w.clamped(x, y - 1)));
    const float scale = 3 * 0.02F * 2 * w.clamped(x, y) / (std::sqrt(gx * gx + gy * gy) + 1e-4F);
    // The wind's pull towards rest is part of the same kernel.
    expected.at(x, y, 0) = gy * scale * std::exp(-0.012F * 2);
    expected.at(x, y, 1) = -gx * scale;
  }
  expectNear(run("k_forces", 2, {Field(2), w, Field(4)}, params), expected, 3e-3F);
}

TEST_F(Kernel, ThePointerPushesSwirlsAndCalms) {
  SimParams params = still();
  params.pointerActive = 1;
  params.pointerX = 0.5F;
  params.pointerY = 0.75F;  // three quarters up
  params.pointerRadius = 0.12F;
  params.pointerStrength = 1;
  constexpr std::int64_t px = W / 2;
  constexpr std::int64_t py = H / 4;

  params.pointerMode = 1;
  params.pointerDX = 0.02F;
  params.pointerDY = 0.05F;  // downwards
  Field pushed = forced(Field(2), params);
  EXPECT_GT(pushed.at(px, py, 0), 0.1F);
  EXPECT_GT(pushed.at(px, py, 1), 0.1F);
  EXPECT_NEAR(pushed.at(1, H - 2, 0), 0, 1e-3);

  params.pointerMode = 2;
  Field swirl = forced(Field(2), params);
  EXPECT_GT(std::fabs(swirl.at(px, py - 2, 0)), 0.005F);
  EXPECT_LT(swirl.at(px, py - 2, 0) * swirl.at(px, py + 2, 0), 0) << "opposite directions on opposite sides";

  params.pointerMode = 3;
  params.dt = 4;
  Field calm = forced(Field(2, 1), params);
  EXPECT_LT(calm.at(px, py, 1), 0.6F);
  EXPECT_GT(calm.at(1, H - 2, 1), 0.95F);
}

TEST_F(Kernel, NothingThatIsNotANumberStays) {
  Field v(2);
  v.at(10, 10, 0) = NAN;
  v.at(20, 10, 1) = INFINITY;
  v.at(30, 10, 0) = 6e4F;
  Field dye(4);
  dye.at(10, 10, 1) = NAN;
  dye.at(40, 10, 3) = INFINITY;
  EXPECT_TRUE(allFinite(run("k_advect_velocity", 2, {v}, still()).values));
  EXPECT_TRUE(allFinite(run("k_advect_dye", 4, {dye, v}, still()).values));
  EXPECT_TRUE(allFinite(forced(v, still()).values));
}

class Fluid : public Kernel {
 protected:
  void TearDown() override {
    sim_.reset();
    Kernel::TearDown();
  }
  void SetUp() override {
    Kernel::SetUp();
    sim_ = std::make_unique<FluidSim>(*device_, *library_);
  }
  void step(const SimParams& params, int iterations = 3) {
    GpuTest::run([&](gpu::Frame& next) { sim_->step(next, params, iterations, frame); });
  }
  std::unique_ptr<FluidSim> sim_;
};

TEST_F(Fluid, StaysFiniteUnderTheWildestSettings) {
  sim_->resize(64, 24);
  std::mt19937 random(2026);
  const float wild[] = {0, 1, -1, 0.5F, 12, -12, 1e3F, -1e3F, 1e9F, -1e9F, 1e-9F};
  SimParams params = still();
  for (int round = 0; round < 20; ++round) {
    std::array<float, sizeof(SimParams) / sizeof(float)> values;
    for (float& value : values) value = wild[random() % std::size(wild)];
    std::memcpy(static_cast<void*>(&params), values.data(), sizeof(params));
    params.palette.fill({1, 0.5F, 0.25F});
    for (int i = 0; i < 100; ++i) step(params, 2);
    for (const auto* field : {sim_->velocityTexture(), sim_->pressureTexture(), sim_->dyeTexture()}) {
      ASSERT_TRUE(allFinite(readFloats(*field))) << "round " << round;
    }
  }
  // And it is not spoilt for good: with sane settings the flow calms down again.
  params = still();
  params.velDissipation = 0.9F;
  for (int i = 0; i < 300; ++i) step(params, 24);
  EXPECT_LT(rms(readFloats(*sim_->velocityTexture())), 0.5);
}

TEST_F(Fluid, KeepsItsFieldsUntilTheGridChangesOrIsCleared) {
  const auto dye = [&] { return rms(readFloats(*sim_->dyeTexture())); };
  EXPECT_EQ(sim_->dyeTexture(), nullptr);
  step(still());  // before any size: nothing
  sim_->resize(10, 3);
  EXPECT_EQ(sim_->gridW(), 32);
  EXPECT_EQ(sim_->gridH(), 8);
  SimParams params = still();
  params.emitRate = 50;
  for (int i = 0; i < 61; ++i) step(params);
  EXPECT_GT(dye(), 0.01);

  sim_->resize(31, 8);
  EXPECT_GT(dye(), 0.01) << "the same size after clamping keeps the flow";
  sim_->needsClear = true;
  params.emitRate = 0;
  step(params);
  EXPECT_EQ(dye(), 0);
}

TEST_F(Kernel, ATargetThatEncodesHoldsWhatOneThatDoesNotHolds) {
  Field light(4);
  for (int c = 0; c < 3; ++c) {
    light.fill(c, [&](std::int64_t x, std::int64_t y) { return 0.0004F * static_cast<float>(x * y + 100 * c); });
  }
  const auto scene = upload(light);
  RenderParams params;
  params.targetW = W;
  params.targetH = H;
  params.opacity = params.contrast = params.coverGain = 1;
  const auto drawn = [&](gpu::PixelFormat format) {
    const BandBlock block{params};
    const auto target = makeTexture(format, {W, H}, drawnAndRead);
    const auto pipeline = device_->makePipeline(*library_, {"f_final", "v_fullscreen", format});
    runOne({.pipeline = *pipeline,
            .textures = {scene.get(), scene.get(), scene.get()},
            .bytes = std::as_bytes(std::span(&block, 1)),
            .target = *target});
    std::vector<std::uint8_t> bytes(target->byteCount());
    target->read(std::as_writable_bytes(std::span(bytes)));
    return bytes;
  };
  for (const float additive : {0.0F, 1.0F}) {
    params.additive = additive;
    const auto plain = drawn(gpu::PixelFormat::bgra8Unorm);
    const auto encoding = drawn(gpu::PixelFormat::bgra8UnormSrgb);
    for (std::size_t i = 0; i < plain.size(); ++i) ASSERT_LE(std::abs(plain[i] - encoding[i]), 1);
    EXPECT_GT(std::ranges::max(plain), 150);
  }
}

}  // namespace
}  // namespace veloria::tests
