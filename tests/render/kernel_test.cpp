// Each kernel against what it should compute, worked out on the CPU.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <span>

#include "GpuFixture.h"
#include "render/FluidSim.h"
#include "render/RenderParams.h"
#include "render/SimParams.h"
#include "settings/NimbraConfig.h"

namespace veloria::tests {
namespace {

// Neither is a multiple of the group size.
constexpr std::uint32_t W = 75;
constexpr std::uint32_t H = 37;
constexpr double frame = 1.0 / 60;

/// The bytes stay until the next call.
std::span<const std::byte> bytesOf(const SimParams& params) {
  static StepBlock block;
  block.params = params;
  return std::as_bytes(std::span(&block, 1));
}

/// Parameters that do nothing.
SimParams still() {
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

/// A field of long waves; its values lie within about `size`.
Field smoothField(std::uint32_t channels, float size, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> phase(0, 6.28F);
  Field field(W, H, channels);
  for (std::uint32_t c = 0; c < channels; ++c) {
    for (int wave = 1; wave <= 3; ++wave) {
      const float px = phase(random);
      const float py = phase(random);
      for (std::uint32_t y = 0; y < H; ++y) {
        for (std::uint32_t x = 0; x < W; ++x) {
          field.at(x, y, c) += size / 2 / static_cast<float>(wave) *
                               std::sin(6.28F * static_cast<float>(wave * x) / W + px) *
                               std::sin(6.28F * static_cast<float>(wave * y) / H + py);
        }
      }
    }
  }
  return field;
}

double rms(const Field& field) {
  double sum = 0;
  for (const float v : field.values) sum += double{v} * v;
  return std::sqrt(sum / static_cast<double>(field.values.size()));
}

bool allFinite(const Field& field) {
  return std::all_of(field.values.begin(), field.values.end(), [](float v) { return std::isfinite(v); });
}

Field divergenceOf(const Field& v) {
  Field out(v.width, v.height, 1);
  for (std::int64_t y = 0; y < v.height; ++y) {
    for (std::int64_t x = 0; x < v.width; ++x) {
      const float below = y + 1 == v.height ? -v.clamped(x, y, 1) : v.clamped(x, y + 1, 1);
      const float above = y == 0 ? -v.clamped(x, y, 1) : v.clamped(x, y - 1, 1);
      out.at(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)) =
          0.5F * (v.clamped(x + 1, y, 0) - v.clamped(x - 1, y, 0) + below - above);
    }
  }
  return out;
}

void expectNear(const Field& actual, const Field& expected, float tolerance) {
  ASSERT_EQ(actual.values.size(), expected.values.size());
  float worst = 0;
  for (std::size_t i = 0; i < actual.values.size(); ++i) {
    worst = std::max(worst, std::fabs(actual.values[i] - expected.values[i]));
  }
  EXPECT_LE(worst, tolerance);
}

class Kernel : public GpuFixture {
 protected:
  std::shared_ptr<gpu::Texture> scalar() { return makeField(gpu::PixelFormat::r16Float, W, H); }
  std::shared_ptr<gpu::Texture> vector() { return makeField(gpu::PixelFormat::rg16Float, W, H); }
  std::shared_ptr<gpu::Texture> colour() { return makeField(gpu::PixelFormat::rgba16Float, W, H); }

  Field divergence(const gpu::Texture& velocity) {
    const auto out = scalar();
    runKernel("k_divergence", {&velocity, out.get()});
    return download(*out);
  }

  /// k_forces on this velocity, with no vorticity to confine and this dye everywhere.
  Field forced(const Field& velocity, const SimParams& params, float dyeAmount = 0) {
    Field dye(W, H, 4);
    std::fill(dye.values.begin(), dye.values.end(), dyeAmount);
    const auto in = upload(velocity);
    const auto curl = upload(Field(W, H, 1));
    const auto dyeTexture = upload(dye);
    const auto out = vector();
    runKernel("k_forces", {in.get(), curl.get(), dyeTexture.get(), out.get()}, bytesOf(params));
    return download(*out);
  }
};

TEST_F(Kernel, clearZeroesEveryFormat) {
  for (const std::uint32_t channels : {1U, 2U, 4U}) {
    const auto texture = upload(smoothField(channels, 3, channels));
    runKernel("k_clear", {texture.get()});
    EXPECT_EQ(rms(download(*texture)), 0);
  }
}

TEST_F(Kernel, divergenceAndCurlAreCentralDifferences) {
  const Field v = smoothField(2, 2, 7);
  const auto velocity = upload(v);
  expectNear(divergence(*velocity), divergenceOf(v), 2e-3F);

  const auto out = scalar();
  runKernel("k_curl", {velocity.get(), out.get()});
  Field expected(W, H, 1);
  for (std::int64_t y = 0; y < H; ++y) {
    for (std::int64_t x = 0; x < W; ++x) {
      expected.at(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)) =
          0.5F * (v.clamped(x + 1, y, 1) - v.clamped(x - 1, y, 1) - v.clamped(x, y + 1, 0) + v.clamped(x, y - 1, 0));
    }
  }
  expectNear(download(*out), expected, 2e-3F);
}

TEST_F(Kernel, jacobiSolvesOneStepWithOpenSidesAndClosedWalls) {
  const Field p = smoothField(1, 4, 3);
  const Field d = smoothField(1, 1, 4);
  const auto pressure = upload(p);
  const auto div = upload(d);
  const auto out = scalar();
  runKernel("k_jacobi", {pressure.get(), div.get(), out.get()});
  Field expected(W, H, 1);
  for (std::int64_t y = 0; y < H; ++y) {
    for (std::int64_t x = 0; x < W; ++x) {
      const float right = x + 1 < W ? p.clamped(x + 1, y) : 0;
      const float left = x > 0 ? p.clamped(x - 1, y) : 0;
      expected.at(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)) =
          (right + left + p.clamped(x, y + 1) + p.clamped(x, y - 1) - d.clamped(x, y)) * 0.2499F;
    }
  }
  expectNear(download(*out), expected, 4e-3F);
}

TEST_F(Kernel, projectionTakesMostOfTheDivergenceAway) {
  Field v = smoothField(2, 2, 11);
  for (std::uint32_t y = 0; y < H; ++y) {  // nothing flows through the walls to begin with
    for (std::uint32_t x = 0; x < W; ++x) v.at(x, y, 1) *= std::sin(3.14159F * (static_cast<float>(y) + 0.5F) / H);
  }
  const auto velocity = upload(v);
  const auto div = scalar();
  runKernel("k_divergence", {velocity.get(), div.get()});
  std::shared_ptr<gpu::Texture> pressure[2] = {upload(Field(W, H, 1)), scalar()};
  const auto before = rms(download(*div));
  for (int i = 0; i < 400; ++i) {
    runKernel("k_jacobi", {pressure[i % 2].get(), div.get(), pressure[1 - i % 2].get()});
  }
  const auto out = vector();
  runKernel("k_project", {velocity.get(), pressure[0].get(), out.get()});
  const auto after = rms(divergence(*out));
  EXPECT_GT(before, 0.05);
  EXPECT_LT(after, before / 6) << "400 iterations leave less than a sixth";
}

TEST_F(Kernel, advectionConservesAConstantAndDampsIt) {
  SimParams params = still();
  const auto velocity = upload(smoothField(2, 3, 5));
  Field constant(W, H, 4);
  for (std::size_t i = 0; i < constant.values.size(); ++i) constant.values[i] = 0.25F * static_cast<float>(i % 4 + 1);
  const auto dye = upload(constant);
  const auto dyeOut = colour();
  runKernel("k_advect_dye", {dye.get(), velocity.get(), dyeOut.get()}, bytesOf(params));
  expectNear(download(*dyeOut), constant, 1e-3F);

  params.dt = 3;
  params.dyeDissipation = 0.9F;
  runKernel("k_advect_dye", {dye.get(), velocity.get(), dyeOut.get()}, bytesOf(params));
  EXPECT_NEAR(download(*dyeOut).at(20, 20, 3), std::pow(0.9, 3), 1e-3);

  Field uniform(W, H, 2);
  for (std::size_t i = 0; i < uniform.values.size(); ++i) uniform.values[i] = i % 2 == 0 ? 1.5F : -0.5F;
  const auto wind = upload(uniform);
  const auto windOut = vector();
  params.velDissipation = 1;
  runKernel("k_advect_velocity", {wind.get(), windOut.get()}, bytesOf(params));
  expectNear(download(*windOut), uniform, 1e-3F);
}

TEST_F(Kernel, advectionMovesADotByDtTimesVelocity) {
  Field dot(W, H, 4);
  dot.at(30, 15, 3) = 1;
  Field flow(W, H, 2);
  for (std::uint32_t i = 0; i < W * H; ++i) {
    flow.values[i * 2] = 2;
    flow.values[i * 2 + 1] = -1.5F;
  }
  SimParams params = still();
  params.dt = 2;
  const auto dye = upload(dot);
  const auto velocity = upload(flow);
  const auto out = colour();
  runKernel("k_advect_dye", {dye.get(), velocity.get(), out.get()}, bytesOf(params));
  Field moved = download(*out);
  EXPECT_NEAR(moved.at(34, 12, 3), 1, 2e-3);  // x + 2 x 2 to the right, 2 x 1.5 upwards
  moved.at(34, 12, 3) = 0;
  EXPECT_LT(rms(moved), 1e-4);
}

TEST_F(Kernel, advectionKeepsEdgesAndAddsNothing) {
  Field curtain(W, H, 4);
  for (std::uint32_t y = 0; y < H; ++y) {
    for (std::uint32_t x = 8; x < 20; ++x) curtain.at(x, y, 3) = 1;
  }
  Field flow(W, H, 2);
  for (std::uint32_t i = 0; i < W * H; ++i) flow.values[i * 2] = 0.3F;
  const auto velocity = upload(flow);
  std::shared_ptr<gpu::Texture> dye[2] = {upload(curtain), colour()};
  constexpr int steps = 60;  // 18 cells
  for (int i = 0; i < steps; ++i) {
    runKernel("k_advect_dye", {dye[i % 2].get(), velocity.get(), dye[1 - i % 2].get()}, bytesOf(still()));
  }
  const Field moved = download(*dye[0]);
  int soft = 0;
  for (std::uint32_t x = 0; x < W; ++x) {
    const float a = moved.at(x, H / 2, 3);
    EXPECT_GE(a, 0);
    EXPECT_LE(a, 1);
    soft += a > 0.05F && a < 0.95F ? 1 : 0;
  }
  EXPECT_GT(moved.at(32, H / 2, 3), 0.9F) << "its middle has moved by 18 cells";
  EXPECT_LT(soft, 18) << "cells of both edges; a plain step leaves about 24, and no 0.9 in the middle";
}

TEST_F(Kernel, emissionIsBornInTheBandAndStopsWhenFull) {
  SimParams params = still();
  params.emitRate = 2.2F;
  params.emitCenter = 0.45F;
  params.emitThreshold = 0.2F;
  params.paletteSpread = 1;
  params.palette = {{{1, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 0, 0}}};
  const auto velocity = upload(Field(W, H, 2));
  std::shared_ptr<gpu::Texture> dye[2] = {upload(Field(W, H, 4)), colour()};
  for (int i = 0; i < 600; ++i) {
    runKernel("k_advect_dye", {dye[i % 2].get(), velocity.get(), dye[1 - i % 2].get()}, bytesOf(params));
  }
  const Field light = download(*dye[0]);
  float most = 0;
  for (std::uint32_t i = 0; i < W * H; ++i) {
    most = std::max(most, light.values[i * 4 + 3]);
    EXPECT_NEAR(light.values[i * 4], light.values[i * 4 + 3], 0.03F);  // palette red only
    EXPECT_EQ(light.values[i * 4 + 1], 0);
  }
  EXPECT_GT(most, 0.5F);
  EXPECT_LE(most, 2.4F);  // what a full source holds
}

TEST_F(Kernel, noForceLeavesTheFlowAlone) {
  const Field v = smoothField(2, 1, 9);
  SimParams params = still();
  params.dt = 1e-4F;  // wind and shear of 0 still pull towards rest, by their rate
  expectNear(forced(v, params), v, 1e-3F);
}

TEST_F(Kernel, curlNoiseHasNoDivergence) {
  SimParams params = still();
  params.dt = 1e-3F;           // so short that the wind does not pull at it
  params.curlStrength = 3e5F;  // and so weak that no peak meets the speed limit
  const Field v = forced(Field(W, H, 2), params);
  const Field d = divergenceOf(v);
  double inside = 0;
  for (std::uint32_t y = 1; y + 1 < H; ++y) {
    for (std::uint32_t x = 1; x + 1 < W; ++x) inside = std::max(inside, double{std::fabs(d.at(x, y))});
  }
  EXPECT_GT(rms(v), 0.1);
  EXPECT_LT(inside, 4e-3 * rms(v)) << "what half floats round off, no more";
}

TEST_F(Kernel, forcesPushTheWayTheyShould) {
  const Field rest(W, H, 2);
  const auto mean = [](const Field& f, std::uint32_t channel) {
    double sum = 0;
    for (std::uint32_t i = 0; i < f.width * f.height; ++i) sum += f.values[i * 2 + channel];
    return sum / (f.width * f.height);
  };
  SimParams wind = still();
  wind.flowSpeed = 2;
  EXPECT_GT(mean(forced(rest, wind), 0), 1e-4);
  wind.flowSpeed = -2;
  EXPECT_LT(mean(forced(rest, wind), 0), -1e-4);

  SimParams lift = still();
  lift.dt = 10;
  lift.buoyancy = 4;
  EXPECT_LT(mean(forced(rest, lift, 1), 1), -1e-3);  // rows grow downwards: up is negative
  EXPECT_EQ(mean(forced(rest, lift, 0), 1), 0);

  SimParams shear = still();
  shear.dt = 10;
  shear.flowShear = 8;
  const Field sheared = forced(rest, shear);
  EXPECT_NEAR(mean(sheared, 0), 0, 1e-3);
  EXPECT_GT(rms(sheared), 1e-3);
}

TEST_F(Kernel, vorticityConfinementFollowsItsFormula) {
  Field w = smoothField(1, 1, 21);
  for (float& value : w.values) value = floatFrom(halfFrom(value));  // the direction hangs on small differences
  SimParams params = still();
  params.dt = 2;
  params.vorticity = 3;
  const auto in = upload(Field(W, H, 2));
  const auto curl = upload(w);
  const auto dye = upload(Field(W, H, 4));
  const auto out = vector();
  runKernel("k_forces", {in.get(), curl.get(), dye.get(), out.get()}, bytesOf(params));
  Field expected(W, H, 2);
  for (std::int64_t y = 0; y < H; ++y) {
    for (std::int64_t x = 0; x < W; ++x) {
      const auto size = [&](std::int64_t i, std::int64_t j) { return std::fabs(w.clamped(i, j)); };
      const float gx = 0.5F * (size(x + 1, y) - size(x - 1, y));
      const float gy = 0.5F * (size(x, y + 1) - size(x, y - 1));
      const float length = std::sqrt(gx * gx + gy * gy) + 1e-4F;
      const float scale = 3 * 0.02F * 2 * w.clamped(x, y) / length;
      // The wind's pull towards rest is part of the same kernel.
      expected.at(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), 0) = gy * scale * std::exp(-0.012F * 2);
      expected.at(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), 1) = -gx * scale;
    }
  }
  expectNear(download(*out), expected, 3e-3F);
}

TEST_F(Kernel, pointerPushesSwirlsAndCalms) {
  SimParams params = still();
  params.pointerActive = 1;
  params.pointerX = 0.5F;
  params.pointerY = 0.75F;  // three quarters up
  params.pointerRadius = 0.12F;
  params.pointerStrength = 1;
  const auto px = static_cast<std::uint32_t>(W / 2);
  const auto py = static_cast<std::uint32_t>(H / 4);

  params.pointerMode = 1;
  params.pointerDX = 0.02F;
  params.pointerDY = 0.05F;  // downwards
  const Field pushed = forced(Field(W, H, 2), params);
  EXPECT_GT(pushed.at(px, py, 0), 0.1F);
  EXPECT_GT(pushed.at(px, py, 1), 0.1F);
  EXPECT_NEAR(pushed.at(1, H - 2, 0), 0, 1e-3);

  params.pointerMode = 2;
  const Field swirl = forced(Field(W, H, 2), params);
  const float above = swirl.at(px, py - 2, 0);
  const float below = swirl.at(px, py + 2, 0);
  EXPECT_GT(std::fabs(above), 0.005F);
  EXPECT_LT(above * below, 0) << "opposite directions on opposite sides";

  params.pointerMode = 3;
  Field moving(W, H, 2);
  std::fill(moving.values.begin(), moving.values.end(), 1.0F);
  params.dt = 4;
  const Field calm = forced(moving, params);
  EXPECT_LT(calm.at(px, py, 1), 0.6F);
  EXPECT_GT(calm.at(1, H - 2, 1), 0.95F);
}

TEST_F(Kernel, nothingThatIsNotANumberStays) {
  Field v(W, H, 2);
  v.at(10, 10, 0) = NAN;
  v.at(20, 10, 1) = INFINITY;
  v.at(30, 10, 0) = 6e4F;
  Field dyeField(W, H, 4);
  dyeField.at(10, 10, 1) = NAN;
  dyeField.at(40, 10, 3) = INFINITY;
  const auto velocity = upload(v);
  const auto dye = upload(dyeField);
  const auto velocityOut = vector();
  const auto dyeOut = colour();
  const SimParams params = still();
  runKernel("k_advect_velocity", {velocity.get(), velocityOut.get()}, bytesOf(params));
  EXPECT_TRUE(allFinite(download(*velocityOut)));
  runKernel("k_advect_dye", {dye.get(), velocity.get(), dyeOut.get()}, bytesOf(params));
  EXPECT_TRUE(allFinite(download(*dyeOut)));
  expectNear(forced(v, params), forced(v, params), 0);
  EXPECT_TRUE(allFinite(forced(v, params)));
}

TEST_F(Kernel, anImpulseStaysFiniteUnderTheWildestSettings) {
  FluidSim sim(*device_, *library_);
  sim.resize(64, 24);
  std::mt19937 random(2026);
  const float wild[] = {0, 1, -1, 0.5F, 12, -12, 1e3F, -1e3F, 1e9F, -1e9F, 1e-9F};
  std::uniform_int_distribution<std::size_t> pick(0, std::size(wild) - 1);
  SimParams params = still();
  for (int step = 0; step < 10'000; ++step) {
    if (step % 250 == 0) {
      std::array<float, 42> values;
      for (float& value : values) value = wild[pick(random)];
      std::memcpy(static_cast<void*>(&params), values.data(), sizeof(params));
      params.palette.fill({1, 0.5F, 0.25F});
    }
    runFrame([&](gpu::Frame& next) { sim.step(next, params, 2, frame); });
    if (step % 250 == 249) {
      ASSERT_TRUE(allFinite(download(*sim.velocityTexture()))) << "step " << step;
      ASSERT_TRUE(allFinite(download(*sim.pressureTexture()))) << "step " << step;
      ASSERT_TRUE(allFinite(download(*sim.dyeTexture()))) << "step " << step;
    }
  }
  // And it is not spoilt for good: with sane settings the flow calms down again.
  params = still();
  params.velDissipation = 0.9F;
  for (int step = 0; step < 300; ++step) {
    runFrame([&](gpu::Frame& next) { sim.step(next, params, 24, frame); });
  }
  EXPECT_LT(rms(download(*sim.velocityTexture())), 0.5);
}

TEST_F(Kernel, steppingFlipsTheFieldsAndClearingEmptiesThem) {
  FluidSim sim(*device_, *library_);
  EXPECT_EQ(sim.dyeTexture(), nullptr);
  runFrame([&](gpu::Frame& next) { sim.step(next, still(), 3, frame); });  // before any size: nothing
  sim.resize(10, 3);
  EXPECT_EQ(sim.gridW(), 32);
  EXPECT_EQ(sim.gridH(), 8);
  SimParams params = still();
  params.emitRate = 50;
  const auto* dyeBefore = sim.dyeTexture();
  const auto* velocityBefore = sim.velocityTexture();
  for (int i = 0; i < 60; ++i) runFrame([&](gpu::Frame& next) { sim.step(next, params, 3, frame); });
  EXPECT_EQ(sim.dyeTexture(), dyeBefore);
  EXPECT_EQ(sim.velocityTexture(), velocityBefore);
  runFrame([&](gpu::Frame& next) { sim.step(next, params, 3, frame); });
  EXPECT_NE(sim.dyeTexture(), dyeBefore);
  EXPECT_NE(sim.velocityTexture(), velocityBefore);
  EXPECT_GT(rms(download(*sim.dyeTexture())), 0.01);

  sim.resize(31, 8);
  EXPECT_GT(rms(download(*sim.dyeTexture())), 0.01) << "the same size after clamping keeps the flow";
  sim.needsClear = true;
  params.emitRate = 0;
  runFrame([&](gpu::Frame& next) { sim.step(next, params, 3, frame); });
  EXPECT_EQ(rms(download(*sim.dyeTexture())), 0);
}

class Composite : public Kernel {
 protected:
  /// The bytes that `f_final` leaves in a target of this format, from light that grows along both directions.
  std::vector<std::uint8_t> drawn(gpu::PixelFormat format) {
    Field light(W, H, 4);
    for (std::uint32_t y = 0; y < H; ++y) {
      for (std::uint32_t x = 0; x < W; ++x) {
        for (std::uint32_t c = 0; c < 3; ++c) light.at(x, y, c) = 0.0004F * static_cast<float>(x * y + 100 * c);
      }
    }
    const auto scene = upload(light);
    const auto target = device_->makeTexture({.format = format,
                                              .size = {W, H},
                                              .usage = gpu::TextureUsage::shaderRead | gpu::TextureUsage::renderTarget,
                                              .label = "target"});
    const auto pipeline =
        device_->makePipeline(*library_, {.function = "f_final", .vertexFunction = "v_fullscreen", .format = format});
    runFrame([&](gpu::Frame& next) {
      next.run({.pipeline = *pipeline,
                .label = "composite",
                .textures = {scene.get(), scene.get(), scene.get()},
                .bytes = std::as_bytes(std::span(&block_, 1)),
                .target = *target});
    });
    std::vector<std::uint8_t> bytes(target->byteCount());
    target->read(std::as_writable_bytes(std::span(bytes)));
    return bytes;
  }

  static RenderParams plainParams() {
    RenderParams params;
    params.targetW = W;
    params.targetH = H;
    params.opacity = 1;
    params.contrast = 1;
    params.coverGain = 1;
    return params;
  }

  BandBlock block_{plainParams()};
};

TEST_F(Composite, aTargetThatEncodesHoldsWhatOneThatDoesNotHolds) {
  for (const float additive : {0.0F, 1.0F}) {
    block_.params.additive = additive;
    const auto plain = drawn(gpu::PixelFormat::bgra8Unorm);
    const auto encoding = drawn(gpu::PixelFormat::bgra8UnormSrgb);
    int furthest = 0;
    for (std::size_t i = 0; i < plain.size(); ++i) furthest = std::max(furthest, std::abs(plain[i] - encoding[i]));
    EXPECT_LE(furthest, 1);
    EXPECT_GT(*std::max_element(plain.begin(), plain.end()), 150);
  }
}

}  // namespace
}  // namespace veloria::tests
