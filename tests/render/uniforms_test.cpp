#include "render/Uniforms.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
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

// Every setting gets a value of its own, so that a pair that is swapped shows. The blocks name their settings in one
// list with the shaders; here is what is not merely of the same name.
TEST(Uniforms, SettingsReachTheirPlaces) {
  NimbraConfig config;
  double next = 0;
  const auto number = [&](auto& field) {
    if constexpr (std::is_same_v<std::remove_reference_t<decltype(field)>, double>) field = next += 0.011;
  };
#define VELORIA_FIELD(type, name, initial, group) number(config.name);
#include "settings/NimbraConfigFields.h"
  config.detailOctaves = 5;
  config.curlOctaves = 99;
  const RenderParams band = makeRenderParams(config, timePeriod + 12.5, {1920, 32}, std::nullopt, {}, 0.75F);
  const SimParams sim = makeSimParams(config, 0.18, 7.5, {}, {10, 10});
  const std::pair<double, double> expected[] = {{band.targetW, 1920},
                                                {band.targetH, 32},
                                                {band.time, 12.5},
                                                {band.one, 1},
                                                {band.zero0, 0},
                                                {band.exposure, config.exposure},
                                                {band.colorCycle, config.colorCycle},
                                                {band.detailOctaves, 5},
                                                {band.glowRadius, config.glowRadius},
                                                {band.notchPresent, 0},
                                                {band.fadeBottom, 0},
                                                {band.textShadowSpread, config.textShadowSpread},
                                                {band.hueSpreadDrift, config.hueSpreadDrift},
                                                {band.debugSolid, 0.75},
                                                {sim.gridW, 0},
                                                {sim.dt, 0.18},
                                                {sim.time, 7.5},
                                                {sim.velDissipation, config.velDissipation},
                                                {sim.curlOctaves, 8},
                                                {sim.ambient, config.ambientLevel * 1.4},
                                                {sim.flowShear, config.flowShear},
                                                {sim.paletteSpread, config.paletteSpread}};
  for (const auto& [value, wanted] : expected) EXPECT_FLOAT_EQ(static_cast<float>(value), static_cast<float>(wanted));
  for (std::size_t stop = 0; stop < 4; ++stop) {
    EXPECT_EQ(band.palette[stop], Palette::presets().front().stops[stop]);
    EXPECT_EQ(sim.palette[stop], Palette::presets().front().stops[stop]);
  }
  config.glowRadius = 1e9;
  EXPECT_EQ(bandParams(config).glowRadius, 16);
  config.customPalette = Palette{"bright", {{2, -1, 0.5F}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}}};
  EXPECT_EQ(bandParams(config).palette[0], (ColorStop{1, 0, 0.5F}));
  config.customPalette->stops.pop_back();
  EXPECT_THROW(makeSimParams(config, 1, 0, {}, {1, 1}), std::logic_error);
}

TEST(Uniforms, TheHousingFillsItsSixPlacesOnlyIfThereIsOne) {
  NimbraConfig config;
  config.notchFeather = 0.25;
  using Six = std::array<float, 6>;
  const auto places = [&](const std::optional<StripGeometry>& geometry, NotchMode mode) {
    config.notchMode = mode;
    const RenderParams p = bandParams(config, geometry);
    return Six{p.notchLeft, p.notchRight, p.notchBottom, p.notchPresent, p.notchHalo, p.notchFeather};
  };
  StripGeometry flat = withNotch;
  flat.windowFrame.height = 0;
  EXPECT_EQ(places(withNotch, NotchMode::mask), (Six{0.4F, 0.6F, 0.32F, 1, 0, 0.25F}));
  EXPECT_EQ(places(withNotch, NotchMode::halo), (Six{0.4F, 0.6F, 0.32F, 1, 1, 0.25F}));
  EXPECT_EQ(places(withNotch, NotchMode::ignore), Six{});
  EXPECT_EQ(places(std::nullopt, NotchMode::mask), Six{});
  EXPECT_EQ(places(flat, NotchMode::mask), Six{});
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
  const std::pair<PointerMode, int> forces[] = {{PointerMode::none, 0},
                                                {PointerMode::glow, 0},
                                                {PointerMode::push, 1},
                                                {PointerMode::vortex, 2},
                                                {PointerMode::calm, 3}};
  for (const auto& [mode, number] : forces) {
    config.pointerMode = mode;
    const SimParams sim = makeSimParams(config, 1, 0, pointer, {200, 50});
    const float on = number > 0 ? 1 : 0;
    EXPECT_EQ(sim.pointerMode, static_cast<float>(number));
    EXPECT_EQ(sim.pointerActive, on);
    EXPECT_FLOAT_EQ(sim.pointerX, on * 0.25F);
    EXPECT_FLOAT_EQ(sim.pointerY, on * 0.8F) << "grows upwards";
    EXPECT_FLOAT_EQ(sim.pointerDX, on * 3.0F / 200);
    EXPECT_FLOAT_EQ(sim.pointerDY, on * -5.0F / 50) << "grows downwards";
    EXPECT_FLOAT_EQ(sim.pointerRadius, on * static_cast<float>(config.pointerRadius));
    EXPECT_FLOAT_EQ(sim.pointerStrength, on * static_cast<float>(config.pointerStrength));
    const RenderParams band = bandParams(config, withNotch, pointer);
    const float glows = mode == PointerMode::glow ? 1 : 0;
    EXPECT_EQ(band.pointerGlowOn, glows);
    EXPECT_FLOAT_EQ(band.pointerX, glows * 0.05F);
    EXPECT_FLOAT_EQ(band.pointerY, glows * 0.1F);
    EXPECT_FLOAT_EQ(band.pointerGlow, glows * static_cast<float>(config.pointerGlow));
    EXPECT_FLOAT_EQ(band.pointerRadius, glows * static_cast<float>(config.pointerRadius));
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

TEST(Uniforms, TheViewIsTheDrawableInPoints) {
  StripGeometry geometry;
  EXPECT_EQ(viewSizeFor({100, 50}, std::nullopt), (Extent{50, 25}));
  for (const auto& [scale, size] :
       {std::pair{2.0, Extent{50, 25}}, {1, {100, 50}}, {0.5, {100, 50}}, {64, {1.5625, 1}}}) {
    geometry.backingScale = scale;
    EXPECT_EQ(viewSizeFor({100, 50}, geometry), size);
  }
}

TEST(Uniforms, DebugSolidIsAWholeNumberOrNothing) {
  for (const char* none : {static_cast<const char*>(nullptr), "", "0.5x", "nan"}) EXPECT_EQ(debugSolidValue(none), 0);
  EXPECT_EQ(debugSolidValue("0.5"), 0.5F);
}

TEST(RenderStats, AveragesStartAtTheFirstValueAndSmoothAfterwards) {
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

TEST(RenderStats, FramesASecondAreThoseOfTheLastSecond) {
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
}  // namespace veloria::tests
