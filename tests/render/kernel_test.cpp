// Each kernel against what it should compute, worked out on the CPU.

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
};

/// A field of long waves that differ with the seed; its values lie within about `size`.
Field smoothField(std::int64_t channels, float size, float seed) {
  Field field(channels);
  for (std::int64_t c = 0; c < channels; ++c) {
    field.fill(c, [&](std::int64_t x, std::int64_t y) {
      const float px = 6.28F * static_cast<float>(x) / W, py = 6.28F * static_cast<float>(y) / H;
      const float shift = seed + 2 * static_cast<float>(c);
      return size / 2 * (std::sin(px + shift) * std::sin(py - shift) + std::sin(2 * px - shift) * std::sin(3 * py));
    });
  }
  return field;
}

double rms(const std::vector<float>& values) {
  double sum = 0;
  for (const float v : values) sum += double{v} * v;
  return std::sqrt(sum / static_cast<double>(values.size()));
}

bool allFinite(const std::vector<float>& values) {
  return std::isfinite(rms(values));
}

void expectNear(const Field& actual, const Field& expected, float tolerance) {
  EXPECT_THAT(actual.values, testing::Pointwise(testing::FloatNear(tolerance), expected.values));
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

  std::shared_ptr<gpu::Texture> upload(const Field& field) {
    auto texture = makeTexture(formats[field.channels], {W, H});
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

  void steps(FluidSim& sim, int count, const SimParams& params, int iterations = 2) {
    for (int i = 0; i < count; ++i) {
      GpuTest::run([&](gpu::Frame& next) { sim.step(next, params, iterations, 1.0 / 60); });
    }
  }

  std::map<std::string, std::shared_ptr<gpu::Pipeline>> pipelines_;
};

TEST_F(Kernel, DivergenceAndCurlAreCentralDifferences) {
  const Field v = smoothField(2, 2, 7);
  const Field curl = Field(1).fill(0, [&](std::int64_t x, std::int64_t y) {
    return 0.5F * (v.clamped(x + 1, y, 1) - v.clamped(x - 1, y, 1) - v.clamped(x, y + 1, 0) + v.clamped(x, y - 1, 0));
  });
  const Field divergence = Field(1).fill(0, [&](std::int64_t x, std::int64_t y) {
    const float below = y + 1 == H ? -v.clamped(x, y, 1) : v.clamped(x, y + 1, 1);
    const float above = y == 0 ? -v.clamped(x, y, 1) : v.clamped(x, y - 1, 1);
    return 0.5F * (v.clamped(x + 1, y, 0) - v.clamped(x - 1, y, 0) + below - above);
  });
  expectNear(run("k_divergence", 1, {v}), divergence, 2e-3F);
  expectNear(run("k_curl", 1, {v}), curl, 2e-3F);
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

  const Field uniform(2, 1.5F);
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
  params.pointerDX = 0.02F;
  params.pointerDY = 0.05F;  // downwards
  constexpr std::int64_t px = W / 2;
  constexpr std::int64_t py = H / 4;

  params.pointerMode = 1;
  const Field pushed = forced(Field(2), params);
  EXPECT_GT(pushed.clamped(px, py, 0), 0.1F);
  EXPECT_GT(pushed.clamped(px, py, 1), 0.1F);
  EXPECT_NEAR(pushed.clamped(1, H - 2, 0), 0, 1e-3);

  params.pointerMode = 2;
  const Field swirl = forced(Field(2), params);
  EXPECT_GT(std::fabs(swirl.clamped(px, py - 2, 0)), 0.005F);
  EXPECT_LT(swirl.clamped(px, py - 2, 0) * swirl.clamped(px, py + 2, 0), 0) << "opposite ways on opposite sides";

  params.pointerMode = 3;
  params.dt = 4;
  const Field calm = forced(Field(2, 1), params);
  EXPECT_LT(calm.clamped(px, py, 1), 0.6F);
  EXPECT_GT(calm.clamped(1, H - 2, 1), 0.95F);
}

TEST_F(Kernel, TheFluidStaysFiniteUnderTheWildestSettings) {
  FluidSim sim(*device_, *library_);
  sim.resize(64, 24);
  std::mt19937 random(2026);
  const float wild[] = {0, 1, -1, 0.5F, 12, -12, 1e3F, -1e3F, 1e9F, -1e9F, 1e-9F};
  SimParams params = still();
  for (int round = 0; round < 20; ++round) {
    std::array<float, sizeof(SimParams) / sizeof(float)> values;
    for (float& value : values) value = wild[random() % std::size(wild)];
    std::memcpy(static_cast<void*>(&params), values.data(), sizeof(params));
    params.palette.fill({1, 0.5F, 0.25F});
    steps(sim, 100, params);
    for (const auto* field : {sim.velocityTexture(), sim.pressureTexture(), sim.dyeTexture()}) {
      ASSERT_TRUE(allFinite(readFloats(*field))) << "round " << round;
    }
  }
  // And it is not spoilt for good: with sane settings the flow calms down again.
  params = still();
  params.velDissipation = 0.9F;
  steps(sim, 300, params, 24);
  EXPECT_LT(rms(readFloats(*sim.velocityTexture())), 0.5);
}

TEST_F(Kernel, WhatIsNotANumberIsGoneAfterAStepAndLightComesBack) {
  SimParams params = still();
  params.emitRate = 50;
  params.emitThreshold = 0;
  params.vorticity = 3;
  params.curlStrength = 10;
  const Field spoilt1(1, NAN), spoilt2(2, NAN), spoilt4(4, NAN);
  const Field flow = run("k_forces", 2, {spoilt2, spoilt1, spoilt4}, params);
  const Field pressure = run("k_jacobi", 1, {spoilt1, run("k_divergence", 1, {spoilt2})});
  const Field dye = run("k_advect_dye", 4, {spoilt4, spoilt2}, params);
  for (const Field& field : {flow, pressure, dye, run("k_curl", 1, {spoilt2}),
                             run("k_advect_velocity", 2, {spoilt2}, params), run("k_project", 2, {spoilt2, spoilt1})}) {
    EXPECT_TRUE(allFinite(field.values));
  }
  EXPECT_GT(rms(run("k_advect_dye", 4, {dye, flow}, params).values), 0.01);
}

TEST_F(Kernel, TheFluidIsKeptUntilItIsCleared) {
  FluidSim sim(*device_, *library_);
  const auto dye = [&] { return rms(readFloats(*sim.dyeTexture())); };
  sim.resize(10, 3);
  SimParams params = still();
  params.emitRate = 50;
  steps(sim, 61, params);
  EXPECT_GT(dye(), 0.01);
  sim.resize(31, 8);
  EXPECT_GT(dye(), 0.01) << "the same size after clamping keeps the flow";
  sim.needsClear = true;
  params.emitRate = 0;
  steps(sim, 1, params);
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
