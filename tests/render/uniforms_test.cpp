#include "render/Uniforms.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>

#include "render/RenderStats.h"

namespace veloria::tests {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr StripGeometry withNotch{
    .windowFrame = {0, 0, 1000, 100}, .menuBarHeight = 40, .notch = Rect{400, 0, 200, 32}, .backingScale = 2};
constexpr PointerState pointer{.local = Point{50, 10}, .velocity = {3, 5}, .inside = true};

RenderParams bandParams(const NimbraConfig& config, const std::optional<StripGeometry>& geometry = withNotch,
                        const PointerState& where = {}) {
  return makeRenderParams(config, 0, {8, 8}, geometry, where, 0);
}

// The blocks name their settings in one list with the shaders; here is what is not merely of the same name.
TEST(Uniforms, SettingsReachTheirPlaces) {
  NimbraConfig config;
  config.detailOctaves = 5;
  config.curlOctaves = 99;
  config.glowRadius = 1e9;
  config.ambientLevel = 0.5;
  config.customPalette = Palette{"bright", {{2, -1, 0.5F}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0.25F}}};
  const RenderParams band = makeRenderParams(config, timePeriod + 12.5, {1920, 32}, std::nullopt, {}, 0.75F);
  const SimParams sim = makeSimParams(config, 0.18, 7.5, {}, {10, 10});
  const std::pair<float, double> expected[] = {{band.targetW, 1920},    {band.targetH, 32},
                                               {band.time, 12.5},       {band.one, 1},
                                               {band.zero0, 0},         {band.exposure, config.exposure},
                                               {band.detailOctaves, 5}, {band.glowRadius, 16},
                                               {band.fadeBottom, 0},    {band.debugSolid, 0.75},
                                               {sim.gridW, 0},          {sim.dt, 0.18},
                                               {sim.time, 7.5},         {sim.velDissipation, config.velDissipation},
                                               {sim.curlOctaves, 8},    {sim.ambient, 0.7}};
  for (const auto& [value, wanted] : expected) EXPECT_FLOAT_EQ(value, static_cast<float>(wanted));
  EXPECT_EQ(band.palette[0], (ColorStop{1, 0, 0.5F}));
  EXPECT_EQ(sim.palette[3], (ColorStop{0, 0, 0.25F}));
}

TEST(Uniforms, TheHousingFillsItsSixPlacesOnlyIfThereIsOne) {
  NimbraConfig config;
  config.notchFeather = 0.25;
  StripGeometry flat = withNotch;
  flat.windowFrame.height = 0;
  using Six = std::array<float, 6>;
  const std::tuple<StripGeometry, NotchMode, Six> cases[] = {
      {withNotch, NotchMode::mask, {0.4F, 0.6F, 0.32F, 1, 0, 0.25F}},
      {withNotch, NotchMode::halo, {0.4F, 0.6F, 0.32F, 1, 1, 0.25F}},
      {withNotch, NotchMode::ignore, {}},
      {StripGeometry{}, NotchMode::mask, {}},
      {flat, NotchMode::mask, {}}};
  for (const auto& [geometry, mode, places] : cases) {
    config.notchMode = mode;
    const RenderParams p = bandParams(config, geometry);
    EXPECT_EQ((Six{p.notchLeft, p.notchRight, p.notchBottom, p.notchPresent, p.notchHalo, p.notchFeather}), places);
  }
}

TEST(Uniforms, TheBottomFadeActsOnTheBleedOnlyAndOpaqueIsNeverOverTheBar) {
  NimbraConfig config;
  const auto fade = [&](double window, double setting) {
    config.fadeBottom = setting;
    return bandParams(config, StripGeometry{.windowFrame = {0, 0, 100, window}, .menuBarHeight = 40, .notch = {}})
        .fadeBottom;
  };
  EXPECT_FLOAT_EQ(fade(100, 0.5), 0.5F * 0.6F * 2.2F);
  EXPECT_FLOAT_EQ(fade(100, 0), 0.02F);
  EXPECT_EQ(fade(40.5, 0.5), 0);
  for (const auto& [mode, background, opaque] : {std::tuple{LayerMode::desktopStrip, true, 1},
                                                 {LayerMode::aboveMenuBar, true, 0},
                                                 {LayerMode::desktopFull, true, 1},
                                                 {LayerMode::desktopFull, false, 0}}) {
    config.layerMode = mode;
    config.opaqueBackground = background;
    EXPECT_EQ(bandParams(config).opaque, opaque);
  }
}

TEST(Uniforms, EachPointerModeFillsItsOwnBlock) {
  NimbraConfig config;
  config.pointerRadius = 0.5;
  config.pointerStrength = 0.25;
  config.pointerGlow = 2;
  const std::pair<PointerMode, float> modes[] = {{PointerMode::none, 0},
                                                 {PointerMode::glow, 0},
                                                 {PointerMode::push, 1},
                                                 {PointerMode::vortex, 2},
                                                 {PointerMode::calm, 3}};
  for (const auto& [mode, number] : modes) {
    config.pointerMode = mode;
    const SimParams sim = makeSimParams(config, 1, 0, pointer, {200, 50});
    using Force = std::array<float, 8>;  // y grows upwards, dy downwards
    EXPECT_EQ((Force{sim.pointerX, sim.pointerY, sim.pointerDX, sim.pointerDY, sim.pointerRadius, sim.pointerStrength,
                     sim.pointerActive, sim.pointerMode}),
              number > 0 ? (Force{0.25F, 0.8F, 0.015F, -0.1F, 0.5F, 0.25F, 1, number}) : Force{});
    const RenderParams band = bandParams(config, withNotch, pointer);
    using Glow = std::array<float, 5>;
    EXPECT_EQ((Glow{band.pointerX, band.pointerY, band.pointerGlow, band.pointerRadius, band.pointerGlowOn}),
              mode == PointerMode::glow ? (Glow{0.05F, 0.1F, 2, 0.5F, 1}) : Glow{});
  }
  for (const PointerState& absent : {PointerState{Point{50, 10}, {}, false}, PointerState{std::nullopt, {}, true}}) {
    config.pointerMode = PointerMode::push;
    EXPECT_EQ(makeSimParams(config, 1, 0, absent, {200, 50}).pointerActive, 0);
    config.pointerMode = PointerMode::glow;
    EXPECT_EQ(bandParams(config, withNotch, absent).pointerGlowOn, 0);
  }
}

TEST(Uniforms, NothingThatIsNotFiniteGetsThrough) {
  NimbraConfig config;
  const auto spoil = [](auto& field) {
    if constexpr (std::is_same_v<std::remove_reference_t<decltype(field)>, double>) field = nan;
  };
#define VELORIA_FIELD(type, name, initial, group) spoil(config.name);
#include "settings/NimbraConfigFields.h"
  const PointerState wild{Point{nan, 1e300}, {1e308, -1e308}, true};
  StripGeometry geometry = withNotch;
  geometry.notch = Rect{nan, 0, nan, nan};
  for (const PointerMode mode : {PointerMode::glow, PointerMode::push}) {
    config.pointerMode = mode;
    const auto sim = std::bit_cast<std::array<float, 42>>(makeSimParams(config, nan, 1e300, wild, {1, 1}));
    const auto band = std::bit_cast<std::array<float, 64>>(makeRenderParams(config, 1e300, {8, 8}, geometry, wild, 0));
    for (const float value : sim) EXPECT_TRUE(std::isfinite(value));
    for (const float value : band) EXPECT_TRUE(std::isfinite(value));
  }
}

TEST(RenderStats, AveragesAreSmoothedAndCountTheLastSecond) {
  double now = 10;
  RenderStats stats([&] { return now; });
  stats.recordFrame(0.002);
  EXPECT_DOUBLE_EQ(stats.figures().gpuMsAvg, 2);
  now += 0.02;
  stats.recordFrame(0.004);
  EXPECT_DOUBLE_EQ(stats.figures().gpuMsAvg, 0.08 * 4 + 0.92 * 2);
  EXPECT_NEAR(stats.figures().fpsAvg, 50, 1e-9);
  EXPECT_EQ(stats.figures().fps, 2);
  now += 5;  // a pause is no frame rate
  stats.recordFrame(0);
  EXPECT_NEAR(stats.figures().fpsAvg, 50, 1e-9);
  EXPECT_DOUBLE_EQ(stats.figures().gpuMsAvg, 0.08 * 4 + 0.92 * 2);
  now += 0.01;
  stats.recordFrame(0);
  EXPECT_NEAR(stats.figures().fpsAvg, 0.08 * 100 + 0.92 * 50, 1e-9);
  EXPECT_EQ(stats.figures().fps, 2);
}

}  // namespace
}  // namespace veloria::tests
