#include "platform/linux/x11/DockStruts.h"

#include <gtest/gtest.h>

#include <vector>

namespace veloria {
namespace {

constexpr PixelRect root{0, 0, 3840, 2160};
constexpr PixelRect left{0, 0, 1920, 1080};
constexpr PixelRect right{1920, 0, 1920, 1080};
constexpr PixelRect lower{0, 1080, 1920, 1080};

Strut topStrut(std::uint32_t thickness, std::uint32_t start, std::uint32_t end) {
  const std::vector<std::uint32_t> values{0, 0, thickness, 0, 0, 0, 0, 0, start, end, 0, 0};
  return strutFromCardinals(values, root).value();
}

TEST(DockStruts, readsBothFormsAndNothingElse) {
  const std::vector<std::uint32_t> whole{1, 2, 3, 4};
  EXPECT_EQ(strutFromCardinals(whole, root), (Strut{{1, 0, 2159}, {2, 0, 2159}, {3, 0, 3839}, {4, 0, 3839}}));
  const std::vector<std::uint32_t> partial{1, 2, 3, 4, 10, 11, 20, 21, 30, 31, 40, 41};
  EXPECT_EQ(strutFromCardinals(partial, root), (Strut{{1, 10, 11}, {2, 20, 21}, {3, 30, 31}, {4, 40, 41}}));
  const std::vector<std::uint32_t> noRange{0, 0, 32, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(strutFromCardinals(noRange, root)->top, (StrutEdge{32, 0, 3839}));
  const std::vector<std::vector<std::uint32_t>> wrong{
      {}, {1, 2, 3}, {1, 2, 3, 4, 5}, std::vector<std::uint32_t>(13), {0, 0, 65536, 0}, {0, 0, 0xFFFFFFFF, 0}};
  for (const auto& values : wrong) EXPECT_EQ(strutFromCardinals(values, root), std::nullopt) << values.size();
}

struct Case {
  const char* what;
  PixelRect monitor;
  std::vector<DockStrut> docks;
  PixelRect visible;
};

TEST(DockStruts, takesFromAMonitorWhatThePanelsOnItReserve) {
  const DockStrut onLeft{{0, 0, 1920, 32}, topStrut(32, 0, 1919)};
  const DockStrut onRight{{1920, 0, 1920, 40}, topStrut(40, 1920, 3839)};
  const DockStrut acrossBoth{{0, 0, 3840, 24}, topStrut(24, 0, 3839)};
  const DockStrut onLower{{0, 1080, 1920, 30}, topStrut(1110, 0, 1919)};
  const DockStrut huge{{0, 0, 1920, 32}, topStrut(65535, 0, 1919)};
  const DockStrut bottom{{0, 2120, 1920, 40}, Strut{{}, {}, {}, {40, 0, 1919}}};
  const DockStrut atLeft{{0, 0, 60, 1080}, Strut{{60, 0, 1079}, {}, {}, {}}};
  const std::vector<Case> cases{
      {"none", left, {}, left},
      {"its own", left, {onLeft, onRight}, {0, 32, 1920, 1048}},
      {"the neighbour's", right, {onLeft}, right},
      {"one across both", right, {acrossBoth}, {1920, 24, 1920, 1056}},
      {"the deepest of two", left, {acrossBoth, onLeft}, {0, 32, 1920, 1048}},
      {"a panel on the monitor below", lower, {onLower}, {0, 1110, 1920, 1050}},
      {"that panel, seen from the monitor above", left, {onLower}, left},
      {"more than half", left, {huge}, left},
      {"the bottom", lower, {bottom}, {0, 1080, 1920, 1040}},
      {"the left edge", left, {atLeft}, {60, 0, 1860, 1080}},
  };
  for (const Case& each : cases) EXPECT_EQ(visiblePixels(each.monitor, root, each.docks), each.visible) << each.what;
}

TEST(DockStruts, usesTheTopOfAPlausibleWorkAreaOnly) {
  EXPECT_EQ(visiblePixelsFromWorkArea(left, {70, 27, 1850, 1053}), (PixelRect{0, 27, 1920, 1053}));
  for (const PixelRect& area : {PixelRect{}, PixelRect{0, 0, 1920, 1080}, PixelRect{0, 900, 1920, 180}}) {
    EXPECT_EQ(visiblePixelsFromWorkArea(left, area), left) << area.y;
  }
}

}  // namespace
}  // namespace veloria
