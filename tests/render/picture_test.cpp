// What the picture must be like, on frames drawn by the real pipeline.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "PictureFixture.h"

namespace veloria::tests {
namespace {

TEST_F(PictureTest, everyLookIsLitWithinASecondAtTenFramesASecond) {
  std::vector<std::pair<std::string, NimbraConfig>> looks{{"defaults", NimbraConfig()}};
  for (const auto& look : LookPreset::all()) looks.emplace_back(look.name, choose(NimbraConfig(), look));
  for (auto& [name, config] : looks) {
    config.backgroundLift = 0;
    EXPECT_GT(take(config, {.seconds = 1, .fps = 10}).shareAbove(70), 0.05) << name;
  }
}

TEST_F(PictureTest, hasDarkGapsAndLight) {
  NimbraConfig config;
  config.backgroundLift = 0;
  const Picture picture = take(config, {.seconds = 10, .fps = 20});
  EXPECT_GT(picture.shareAbove(110), 0.1);
  EXPECT_LT(picture.shareAbove(60), 0.95);
  EXPECT_LT(picture.shareAbove(254), 0.02) << "clipped";
}

TEST_F(PictureTest, movesButDoesNotFlicker) {
  NimbraConfig config = preset("Northern Lights");
  const auto pictures = take(config, {.fps = 60}, {4, 4 + 1.0 / 60, 7});
  EXPECT_LT(difference(pictures[0], pictures[1]), 2.0);
  EXPECT_GT(difference(pictures[0], pictures[2]), 3 * difference(pictures[0], pictures[1]));
  EXPECT_GT(difference(pictures[0], pictures[2]), 4.0);
}

TEST_F(PictureTest, wearsTheColoursOfItsPalette) {
  NimbraConfig config;
  config.heightTint = 0;
  config.hueSpread = 0;
  config.colorCycle = 0;
  config.backgroundLift = 0;
  for (int channel = 0; channel < 3; ++channel) {
    ColorStop stop{0, 0, 0};
    stop[static_cast<std::size_t>(channel)] = 1;
    config.customPalette = Palette{"one colour", {stop, stop, stop, stop}};
    const Picture picture = take(config, {});
    double sums[3] = {};
    for (std::size_t i = 0; i < picture.rgba.size(); ++i) {
      if (i % 4 < 3) sums[i % 4] += picture.rgba[i];
    }
    const double own = sums[channel];
    EXPECT_GT(own, 5 * sums[(channel + 1) % 3]);
    EXPECT_GT(own, 5 * sums[(channel + 2) % 3]);
  }
}

TEST_F(PictureTest, transparentBandIsPremultipliedAndLeavesGaps) {
  NimbraConfig config;
  config.opaqueBackground = false;
  config.ambientLevel = 0;
  const Picture picture = take(config, {.seconds = 6});
  int clearPixels = 0;
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    for (std::uint32_t x = 0; x < picture.width; ++x) {
      EXPECT_LE(picture.brightest(x, y), picture.at(x, y)[3]);
      clearPixels += picture.at(x, y)[3] < 40 ? 1 : 0;
    }
  }
  EXPECT_GT(clearPixels, static_cast<int>(picture.width * picture.height / 20));

  config.exposure = 0;
  EXPECT_EQ(take(config, {.seconds = 0.2}).mean(), 0) << "no light, no dither, no cover";
  config.opaqueBackground = true;
  for (const auto& [x, y] : {std::pair{200U, 5U}, {480U, 12U}, {700U, 20U}}) {
    EXPECT_EQ(take(config, {.seconds = 0.2}).at(x, y)[3], 255);
  }
}

TEST_F(PictureTest, fadesToNothingBelowTheBarAndAtTheSides) {
  NimbraConfig config = preset("Rave");
  StripGeometry geometry;
  geometry.windowFrame = {0, 0, 960, 96};
  geometry.menuBarHeight = 32;
  config.fadeSide = 0.05;
  const Picture picture = take(config, {.size = {960, 96}, .geometry = geometry});
  for (std::uint32_t x = 0; x < 960; x += 7) EXPECT_LE(picture.at(x, 95)[3], 3);
  for (std::uint32_t y = 0; y < 96; ++y) {
    EXPECT_LE(picture.at(0, y)[3], 3);
    EXPECT_LE(picture.at(959, y)[3], 3);
  }
  EXPECT_EQ(picture.at(480, 16)[3], 255);
}

TEST_F(PictureTest, keepsOutOfTheHousingOrTracesIt) {
  NimbraConfig config = preset("Rave");
  StripGeometry geometry;
  geometry.windowFrame = {0, 0, 960, 40};
  geometry.menuBarHeight = 40;
  geometry.notch = Rect{380, 0, 200, 32};
  const Shot shot{.size = {960, 40}, .geometry = geometry};
  const Picture masked = take(config, shot);
  config.notchMode = NotchMode::halo;
  const Picture halo = take(config, shot);
  config.notchMode = NotchMode::ignore;
  const Picture ignored = take(config, shot);
  double outlineMasked = 0;
  double outlineHalo = 0;
  for (std::uint32_t x = 400; x < 560; ++x) {
    for (std::uint32_t y = 0; y < 26; ++y) {
      EXPECT_EQ(masked.at(x, y)[3], 0);
      EXPECT_EQ(halo.at(x, y)[3], 0);
      EXPECT_EQ(ignored.at(x, y)[3], 255);
    }
    outlineMasked += masked.brightest(x, 34);
    outlineHalo += halo.brightest(x, 34);
  }
  EXPECT_GT(outlineHalo, outlineMasked * 1.3);
  EXPECT_EQ(masked.at(100, 20)[3], 255);
}

TEST_F(PictureTest, keepsTheTextOfTheBarClear) {
  constexpr std::uint32_t w = 960;
  constexpr std::uint32_t h = 24;
  std::vector<std::uint8_t> bar(w * h * 4, 255);
  for (std::uint32_t i = 0; i < w * h; ++i) std::fill_n(bar.begin() + i * 4, 3, std::uint8_t{30});
  const auto isText = [](std::uint32_t x, std::uint32_t y) {
    return x >= 400 && x < 500 && x % 8 < 2 && y > 6 && y < 18;
  };
  for (std::uint32_t y = 0; y < h; ++y) {
    for (std::uint32_t x = 0; x < w; ++x) {
      if (isText(x, y)) std::fill_n(bar.begin() + (y * w + x) * 4, 3, std::uint8_t{240});
    }
  }
  auto texture = device_->makeTexture({.format = gpu::PixelFormat::rgba8Unorm,
                                       .size = {w, h},
                                       .usage = gpu::TextureUsage::shaderRead,
                                       .storage = gpu::StorageMode::shared,
                                       .label = "bar"});
  texture->write(std::as_bytes(std::span(bar)));
  auto box = std::make_shared<TextureBox>();
  box->store(texture);
  NimbraConfig config = preset("Rave");
  config.layerMode = LayerMode::aboveMenuBar;
  config.preserveMenuBarText = true;
  const Picture picture = take(config, {.size = {w, h}, .backdrop = box});
  config.preserveMenuBarText = false;
  const Picture unmasked = take(config, {.size = {w, h}, .backdrop = box});
  double onText = 0;
  double beside = 0;
  double unmaskedText = 0;
  int count = 0;
  for (std::uint32_t y = 8; y < 17; ++y) {
    for (std::uint32_t x = 400; x < 500; ++x) {
      if (!isText(x, y)) continue;
      onText += picture.at(x, y)[3];
      unmaskedText += unmasked.at(x, y)[3];
      beside += picture.at(x + 200, y)[3];
      ++count;
    }
  }
  EXPECT_LT(onText / count, 4);
  EXPECT_GT(unmaskedText / count, 60);
  EXPECT_GT(beside / count, 30);
}

TEST_F(PictureTest, pointerGlowLightsItsSurroundings) {
  NimbraConfig config = preset("Whisper");
  config.pointerMode = PointerMode::glow;
  config.pointerGlow = 2;
  StripGeometry geometry;
  geometry.windowFrame = {0, 0, 960, 24};
  geometry.menuBarHeight = 24;
  Shot shot{.geometry = geometry};
  const Picture without = take(config, shot);
  shot.pointer = {Point{300, 12}, {}, true};
  const Picture with = take(config, shot);
  EXPECT_GT(with.brightest(300, 12), without.brightest(300, 12) + 40);
  EXPECT_EQ(with.brightest(800, 12), without.brightest(800, 12));
}

TEST_F(PictureTest, everyPresetIsAnotherPicture) {
  std::vector<Picture> pictures;
  for (const auto& look : LookPreset::all()) pictures.push_back(take(choose(NimbraConfig(), look), {.seconds = 4}));
  for (std::size_t a = 0; a < pictures.size(); ++a) {
    for (std::size_t b = a + 1; b < pictures.size(); ++b) {
      EXPECT_GT(difference(pictures[a], pictures[b]), 8)
          << LookPreset::all()[a].name << " / " << LookPreset::all()[b].name;
    }
  }
}

TEST_F(PictureTest, absurdSettingsNeitherHangNorSpoilThePictureForGood) {
  NimbraConfig wild;
  const auto spoil = [](auto& field) {
    using Type = std::remove_reference_t<decltype(field)>;
    if constexpr (std::is_same_v<Type, double>) field = 1e12;
    if constexpr (std::is_same_v<Type, std::int64_t>) field = 9'000'000'000'000'000'000;
  };
#define VELORIA_FIELD(type, name, initial, group) spoil(wild.name);
#include "settings/NimbraConfigFields.h"
  double now = 1;
  RenderStats stats([&now] { return now; });
  NimbraRenderer renderer(*device_, *library_, stats, [&now] { return now; });
  OffscreenTarget target(*device_, {320, 16});
  const auto frames = [&](int count) {
    for (int i = 0; i < count; ++i) {
      now += 1.0 / 30;
      renderer.draw(target);
    }
    const auto pixels = target.pixels();
    return Picture{320, 16, {pixels.begin(), pixels.end()}};
  };
  renderer.config = wild;
  frames(10);
  renderer.config = preset("Northern Lights");
  renderer.resizeSimGrid({320, 16});
  EXPECT_GT(frames(60).shareAbove(70), 0.05);
}

TEST_F(PictureTest, debugSolidFillsTheBand) {
  setenv("NIMBRA_DEBUG_SOLID", "1", 1);
  const Picture picture = take(NimbraConfig(), {.seconds = 0.1});
  unsetenv("NIMBRA_DEBUG_SOLID");
  EXPECT_EQ(picture.shareAbove(254), 1);
}

}  // namespace
}  // namespace veloria::tests
