#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "AllocationCount.h"
#include "scene/BuiltInScripts.h"
#include "scene/SceneDriver.h"

namespace veloria {
namespace {

class Ticks : public testing::Test {
 protected:
  void SetUp() override {
    if (!countsAllocations()) GTEST_SKIP() << "allocations can't be counted under a sanitizer";
  }

  std::uint64_t allocationsInSixtyTicks() {
    driver.recompile();
    tick();
    const std::uint64_t before = allocationsInProcess();
    for (int i = 0; i < 60; ++i) tick();
    return allocationsInProcess() - before;
  }

  void tick() {
    now += 1.0 / 30;
    for (const auto name : DriveChannels::sourceNames) driver.channels.set(name, now, 0.3);
    driver.tick();
  }

  NimbraConfig settings;
  double now = 0;
  SceneDriver driver{
      {.settings = [this]() -> const NimbraConfig& { return settings; }, .mediaClock = [this] { return now; }}};
};

TEST_F(Ticks, TheCountCounts) {
  const std::uint64_t before = allocationsInProcess();
  const auto text = std::make_unique<std::string>(100, 'x');
  EXPECT_EQ(allocationsInProcess() - before, 2U);
}

TEST_F(Ticks, NoModeAllocates) {
  settings.tempo = 1.5;
  settings.paletteName = "a name that is too long for a short string's own buffer";
  settings.customScript = "palette #ff0000 #00ff00\nbind glow = max(bass, a_name_too_long_for_a_small_string, 1, 2, 3)";
  for (std::size_t mode = 0; mode < rawValues<Visualizer>.size(); ++mode) {
    settings.visualizer = static_cast<Visualizer>(mode);
    EXPECT_EQ(allocationsInSixtyTicks(), 0U) << rawValue(settings.visualizer);
  }
}

TEST_F(Ticks, NoPaletteAllocates) {
  driver.wallpaper = Palette::presets().front();
  settings.matchWallpaper = true;
  EXPECT_EQ(allocationsInSixtyTicks(), 0U);
  settings.customPalette = Palette::presets().back();
  EXPECT_EQ(allocationsInSixtyTicks(), 0U);
  settings.matchWallpaper = false;
  EXPECT_EQ(allocationsInSixtyTicks(), 0U);
}

}  // namespace
}  // namespace veloria
