#include "render/Uniforms.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>

#include "render/RenderStats.h"
#include "render/UniformFloat.h"

namespace veloria {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

template <std::size_t Count, typename Block>
std::array<float, Count> floatsOf(const Block& block) {
  static_assert(sizeof(Block) == Count * sizeof(float));
  std::array<float, Count> floats;
  std::memcpy(floats.data(), &block, sizeof(block));
  return floats;
}

StripGeometry geometryWithNotch() {
  StripGeometry geometry;
  geometry.windowFrame = {0, 0, 1000, 100};
  geometry.menuBarHeight = 40;
  geometry.notch = Rect{400, 0, 200, 32};
  geometry.backingScale = 2;
  return geometry;
}

PointerState pointerAt(double x, double y) {
  return {.local = Point{x, y}, .velocity = {3, 5}, .inside = true};
}

// Every field gets a value of its own, so a pair that is swapped shows.
TEST(RenderParams, everySettingReachesItsOffset) {
  NimbraConfig config;
  double next = 0.011;
  for (double* field : {&config.exposure,       &config.opacity,          &config.contrast,       &config.saturation,
                        &config.hueShift,       &config.colorCycle,       &config.rayIntensity,   &config.raySharpness,
                        &config.rayScale,       &config.raySpeed,         &config.rayFlow,        &config.glowAmount,
                        &config.glowRadius,     &config.fadeTop,          &config.fadeSide,       &config.shimmer,
                        &config.ambientLevel,   &config.heightTint,       &config.coverGain,      &config.additive,
                        &config.textThreshold,  &config.textSoftness,     &config.textDilate,     &config.textBlur,
                        &config.textShadow,     &config.textShadowSpread, &config.backgroundLift, &config.hueSpread,
                        &config.hueSpreadScale, &config.hueSpreadDrift}) {
    *field = next;
    next += 0.011;
  }
  config.detailOctaves = 5;
  const auto f = floatsOf<64>(makeRenderParams(config, 12.5, {1920, 32}, std::nullopt, {}, 0.75F));
  const std::pair<std::size_t, double> expected[] = {{0, 1920},
                                                     {4, 32},
                                                     {8, 12.5},
                                                     {12, 1},
                                                     {16, 0},
                                                     {20, 0},
                                                     {24, config.exposure},
                                                     {28, config.opacity},
                                                     {32, config.contrast},
                                                     {36, config.saturation},
                                                     {40, config.hueShift},
                                                     {44, config.colorCycle},
                                                     {48, config.rayIntensity},
                                                     {52, config.raySharpness},
                                                     {56, config.rayScale},
                                                     {60, config.raySpeed},
                                                     {64, config.rayFlow},
                                                     {68, 5},
                                                     {72, config.glowAmount},
                                                     {76, config.glowRadius},
                                                     {80, 0},
                                                     {92, 0},
                                                     {100, 0},
                                                     {104, config.fadeTop},
                                                     {108, 0},
                                                     {112, config.fadeSide},
                                                     {116, 0},
                                                     {132, 0},
                                                     {136, config.shimmer},
                                                     {140, config.ambientLevel},
                                                     {144, config.heightTint},
                                                     {148, config.coverGain},
                                                     {152, config.additive},
                                                     {204, 0},
                                                     {208, config.textThreshold},
                                                     {212, config.textSoftness},
                                                     {216, config.textDilate},
                                                     {220, config.textBlur},
                                                     {224, config.textShadow},
                                                     {228, config.textShadowSpread},
                                                     {232, 1},
                                                     {236, config.backgroundLift},
                                                     {240, config.hueSpread},
                                                     {244, config.hueSpreadScale},
                                                     {248, config.hueSpreadDrift},
                                                     {252, 0.75}};
  for (const auto& [offset, value] : expected) {
    EXPECT_FLOAT_EQ(f[offset / 4], static_cast<float>(value)) << "offset " << offset;
  }
  const Palette& palette = Palette::presets().front();
  for (std::size_t stop = 0; stop < 4; ++stop) {
    for (std::size_t c = 0; c < 3; ++c) EXPECT_EQ(f[39 + stop * 3 + c], palette.stops[stop][c]);
  }
}

TEST(RenderParams, housingFillsItsSixSlotsOnlyWhenThereIsOne) {
  NimbraConfig config;
  config.notchFeather = 0.25;
  const auto slots = [&](const std::optional<StripGeometry>& geometry) {
    const auto f = floatsOf<64>(makeRenderParams(config, 0, {8, 8}, geometry, {}, 0));
    return std::array<float, 6>{f[20], f[21], f[22], f[23], f[24], f[25]};
  };
  const std::array<float, 6> none{};
  EXPECT_EQ(slots(geometryWithNotch()), (std::array<float, 6>{0.4F, 0.6F, 0.32F, 1, 0, 0.25F}));
  config.notchMode = NotchMode::halo;
  EXPECT_EQ(slots(geometryWithNotch())[4], 1.0F);
  config.notchMode = NotchMode::ignore;
  EXPECT_EQ(slots(geometryWithNotch()), none);
  config.notchMode = NotchMode::mask;
  EXPECT_EQ(slots(std::nullopt), none);
  StripGeometry flat = geometryWithNotch();
  flat.windowFrame.height = 0;
  EXPECT_EQ(slots(flat), none);
}

TEST(RenderParams, bottomFadeActsOnTheBleedOnly) {
  NimbraConfig config;
  const auto fade = [&](double window, double bar) {
    StripGeometry geometry;
    geometry.windowFrame = {0, 0, 100, window};
    geometry.menuBarHeight = bar;
    return makeRenderParams(config, 0, {8, 8}, geometry, {}, 0).fadeBottom;
  };
  config.fadeBottom = 0.5;
  EXPECT_FLOAT_EQ(fade(100, 40), 0.5F * 0.6F * 2.2F);
  EXPECT_EQ(fade(40.5, 40), 0);
  config.fadeBottom = 0;
  EXPECT_FLOAT_EQ(fade(100, 40), 0.02F);
  EXPECT_EQ(makeRenderParams(config, 0, {8, 8}, std::nullopt, {}, 0).fadeBottom, 0);
}

TEST(RenderParams, opaqueNeverOverTheBar) {
  NimbraConfig config;
  const auto opaque = [&] { return makeRenderParams(config, 0, {8, 8}, std::nullopt, {}, 0).opaque; };
  EXPECT_EQ(opaque(), 1);
  config.layerMode = LayerMode::aboveMenuBar;
  EXPECT_EQ(opaque(), 0);
  config.layerMode = LayerMode::desktopFull;
  EXPECT_EQ(opaque(), 1);
  config.opaqueBackground = false;
  EXPECT_EQ(opaque(), 0);
}

TEST(Pointer, eachModeFillsItsOwnBlock) {
  NimbraConfig config;
  const Extent view{200, 50};
  const std::pair<PointerMode, float> forces[] = {{PointerMode::none, 0},
                                                  {PointerMode::glow, 0},
                                                  {PointerMode::push, 1},
                                                  {PointerMode::vortex, 2},
                                                  {PointerMode::calm, 3}};
  for (const auto& [mode, number] : forces) {
    config.pointerMode = mode;
    const SimParams sim = makeSimParams(config, 1, 0, pointerAt(50, 10), view);
    EXPECT_EQ(sim.pointerMode, number);
    EXPECT_EQ(sim.pointerActive, number > 0 ? 1 : 0);
    EXPECT_EQ(sim.pointerX, number > 0 ? 0.25F : 0);
    const RenderParams render = makeRenderParams(config, 0, {8, 8}, geometryWithNotch(), pointerAt(50, 10), 0);
    EXPECT_EQ(render.pointerGlowOn, mode == PointerMode::glow ? 1 : 0);
  }
}

TEST(Pointer, positionGrowsUpwardsAndVelocityDownwards) {
  NimbraConfig config;
  config.pointerMode = PointerMode::push;
  const SimParams sim = makeSimParams(config, 1, 0, pointerAt(50, 10), {200, 50});
  EXPECT_FLOAT_EQ(sim.pointerX, 0.25F);
  EXPECT_FLOAT_EQ(sim.pointerY, 0.8F);
  EXPECT_FLOAT_EQ(sim.pointerDX, 3.0F / 200);
  EXPECT_FLOAT_EQ(sim.pointerDY, -5.0F / 50);

  PointerState outside = pointerAt(50, 10);
  outside.inside = false;
  EXPECT_EQ(makeSimParams(config, 1, 0, outside, {200, 50}).pointerActive, 0);
  EXPECT_EQ(makeSimParams(config, 1, 0, PointerState{std::nullopt, {}, true}, {200, 50}).pointerActive, 0);
}

TEST(Pointer, glowIsAShareOfTheWindow) {
  NimbraConfig config;
  config.pointerMode = PointerMode::glow;
  const RenderParams render = makeRenderParams(config, 0, {8, 8}, geometryWithNotch(), pointerAt(250, 25), 0);
  EXPECT_FLOAT_EQ(render.pointerX, 0.25F);
  EXPECT_FLOAT_EQ(render.pointerY, 0.25F);
  EXPECT_FLOAT_EQ(render.pointerGlow, 0.5F);
}

TEST(SimParams, everySettingReachesItsOffset) {
  NimbraConfig config;
  double next = 0.011;
  for (double* field :
       {&config.velDissipation, &config.dyeDissipation, &config.vorticity, &config.curlStrength, &config.curlScale,
        &config.curlSpeed, &config.buoyancy, &config.emitRate, &config.emitScale, &config.emitSpeed, &config.emitHeight,
        &config.emitCenter, &config.emitThreshold, &config.ambientLevel, &config.flowSpeed, &config.flowShear,
        &config.pointerRadius, &config.pointerStrength, &config.paletteSpread}) {
    *field = next;
    next += 0.011;
  }
  config.curlOctaves = 4;
  const auto f = floatsOf<42>(makeSimParams(config, 0.18, 7.5, pointerAt(1, 1), {10, 10}));
  const std::pair<std::size_t, double> expected[] = {{0, 0},
                                                     {4, 0},
                                                     {8, 0.18},
                                                     {12, 7.5},
                                                     {16, config.velDissipation},
                                                     {20, config.dyeDissipation},
                                                     {24, config.vorticity},
                                                     {28, config.curlStrength},
                                                     {32, config.curlScale},
                                                     {36, config.curlSpeed},
                                                     {40, 4},
                                                     {44, config.buoyancy},
                                                     {48, config.emitRate},
                                                     {52, config.emitScale},
                                                     {56, config.emitSpeed},
                                                     {60, config.emitHeight},
                                                     {64, config.emitCenter},
                                                     {68, config.emitThreshold},
                                                     {72, config.ambientLevel * 1.4},
                                                     {76, config.flowSpeed},
                                                     {80, config.flowShear},
                                                     {100, config.pointerRadius},
                                                     {104, config.pointerStrength},
                                                     {108, 1},
                                                     {112, 2},
                                                     {116, config.paletteSpread}};
  for (const auto& [offset, value] : expected) {
    EXPECT_FLOAT_EQ(f[offset / 4], static_cast<float>(value)) << "offset " << offset;
  }
}

TEST(Uniforms, nothingThatIsNotFiniteGetsThrough) {
  NimbraConfig config;
  const auto spoil = [](auto& field) {
    if constexpr (std::is_same_v<std::remove_reference_t<decltype(field)>, double>) field = nan;
  };
#define VELORIA_FIELD(type, name, initial, group) spoil(config.name);
#include "settings/NimbraConfigFields.h"
  PointerState pointer = pointerAt(nan, 1e300);
  pointer.velocity = {1e308, -1e308};
  StripGeometry geometry = geometryWithNotch();
  geometry.notch = Rect{nan, 0, nan, nan};
  for (const PointerMode mode : {PointerMode::glow, PointerMode::push}) {
    config.pointerMode = mode;
    for (const float value : floatsOf<42>(makeSimParams(config, nan, 1e300, pointer, {1, 1}))) {
      EXPECT_TRUE(std::isfinite(value));
    }
    for (const float value : floatsOf<64>(makeRenderParams(config, 1e300, {8, 8}, geometry, pointer, 0))) {
      EXPECT_TRUE(std::isfinite(value));
    }
  }
}

TEST(Uniforms, paletteMustHaveFourStops) {
  NimbraConfig config;
  config.customPalette = Palette{"short", {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  EXPECT_THROW(makeSimParams(config, 1, 0, {}, {1, 1}), std::logic_error);
  EXPECT_THROW(makeRenderParams(config, 0, {8, 8}, std::nullopt, {}, 0), std::logic_error);
}

TEST(Uniforms, timeWrapsSoThatFloatsStayFine) {
  EXPECT_FLOAT_EQ(wrappedTime(timePeriod * 400 + 2.25), 2.25F);
}

TEST(Uniforms, viewSizeUsesTheBackingScale) {
  EXPECT_EQ(viewSizeFor({100, 50}, std::nullopt), (Extent{50, 25}));
  StripGeometry geometry;
  geometry.backingScale = 2;
  EXPECT_EQ(viewSizeFor({100, 50}, geometry), (Extent{50, 25}));
  geometry.backingScale = 1;
  EXPECT_EQ(viewSizeFor({100, 50}, geometry), (Extent{100, 50}));
  geometry.backingScale = 4;
  EXPECT_EQ(viewSizeFor({100, 2}, geometry), (Extent{25, 1}));
}

TEST(Uniforms, debugSolidIsAWholeNumberOrNothing) {
  EXPECT_EQ(debugSolidValue(nullptr), 0);
  EXPECT_EQ(debugSolidValue(""), 0);
  EXPECT_EQ(debugSolidValue("0.5x"), 0);
  EXPECT_EQ(debugSolidValue("nan"), 0);
  EXPECT_EQ(debugSolidValue("0.5"), 0.5F);
}

TEST(RenderStats, averagesStartAtTheFirstValueAndSmoothAfterwards) {
  double now = 10;
  RenderStats stats([&] { return now; });
  stats.recordFrame(0.002);
  EXPECT_DOUBLE_EQ(stats.figures().gpuMsAvg, 2);
  EXPECT_EQ(stats.figures().fpsAvg, 0);
  now += 0.02;
  stats.recordFrame(0.004);
  EXPECT_DOUBLE_EQ(stats.figures().gpuMsAvg, 0.08 * 4 + 0.92 * 2);
  EXPECT_NEAR(stats.figures().fpsAvg, 50, 1e-9);
  now += 5;  // a pause is no frame rate
  stats.recordFrame(0);
  EXPECT_NEAR(stats.figures().fpsAvg, 50, 1e-9);
  EXPECT_DOUBLE_EQ(stats.figures().gpuMsAvg, 0.08 * 4 + 0.92 * 2);
  now += 0.01;
  stats.recordFrame(0);
  EXPECT_NEAR(stats.figures().fpsAvg, 0.08 * 100 + 0.92 * 50, 1e-9);
}

TEST(RenderStats, framesASecondAreThoseOfTheLastSecond) {
  double now = 10;
  RenderStats stats([&] { return now; });
  EXPECT_EQ(stats.figures().fps, 0);
  for (int pair = 0; pair < 20; ++pair) {  // two at once, as a slow GPU finishes them
    now += 0.125;
    stats.recordFrame(0.088);
    stats.recordFrame(0.088);
  }
  EXPECT_EQ(stats.figures().fps, 16);
  now += 0.5;
  EXPECT_EQ(stats.figures().fps, 8);
  now += 0.5;
  EXPECT_EQ(stats.figures().fps, 0);
}

}  // namespace
}  // namespace veloria
