// What is made of the numbers that an X server gives; tests/desktop has the server itself.

#include <gtest/gtest.h>

#include <cstring>
#include <span>

#include "platform/linux/x11/PanelPicture.h"
#include "platform/linux/x11/X11Activity.h"
#include "platform/linux/x11/X11BandFactory.h"
#include "platform/linux/x11/X11Docks.h"

namespace veloria::tests {
namespace {

using Numbers = std::vector<std::uint32_t>;

constexpr PixelRect root{0, 0, 3840, 2160};
constexpr PixelRect left{0, 0, 1920, 1080};
constexpr PixelRect right{1920, 0, 1920, 1080};
constexpr PixelRect lower{0, 1080, 1920, 1080};

TEST(DockStruts, AreReadInBothFormsAndNoOther) {
  const std::pair<Numbers, std::optional<Strut>> cases[] = {
      {{1, 2, 3, 4}, Strut{{1, 0, 2159}, {2, 0, 2159}, {3, 0, 3839}, {4, 0, 3839}}},
      {{1, 2, 3, 4, 10, 11, 20, 21, 30, 31, 40, 41}, Strut{{1, 10, 11}, {2, 20, 21}, {3, 30, 31}, {4, 40, 41}}},
      {{0, 0, 32, 0, 0, 0, 0, 0, 0, 0, 0, 0}, Strut{{0, 0, 2159}, {0, 0, 2159}, {32, 0, 3839}, {0, 0, 3839}}},
      {{1, 2, 3}, std::nullopt},
      {Numbers(13), std::nullopt},
      {{0, 0, 65536, 0}, std::nullopt},
  };
  for (const auto& [numbers, strut] : cases) EXPECT_EQ(strutFromCardinals(numbers, root), strut) << numbers.size();
}

TEST(DockStruts, TakeFromAMonitorWhatThePanelsOnItReserve) {
  const auto top = [](int thickness, int start, int end) { return Strut{{}, {}, {thickness, start, end}, {}}; };
  const DockStrut onLeft{{0, 0, 1920, 32}, top(32, 0, 1919)};
  const DockStrut onRight{{1920, 0, 1920, 40}, top(40, 1920, 3839)};
  const DockStrut acrossBoth{{0, 0, 3840, 24}, top(24, 0, 3839)};
  const DockStrut onLower{{0, 1080, 1920, 30}, top(1110, 0, 1919)};
  const struct {
    const char* what;
    PixelRect monitor;
    std::vector<DockStrut> docks;
    PixelRect visible;
  } cases[] = {
      {"its own", left, {onLeft, onRight}, {0, 32, 1920, 1048}},
      {"the deepest of two", left, {acrossBoth, onLeft}, {0, 32, 1920, 1048}},
      {"one on the monitor below", lower, {onLower}, {0, 1110, 1920, 1050}},
      {"that panel, seen from the monitor above", left, {onLower}, left},
      {"more than half", left, {{{0, 0, 1920, 32}, top(541, 0, 1919)}}, left},
      {"the bottom", lower, {{{0, 2120, 1920, 40}, {{}, {}, {}, {40, 0, 1919}}}}, {0, 1080, 1920, 1040}},
      {"the left edge", left, {{{0, 0, 60, 1080}, {{60, 0, 1079}, {}, {}, {}}}}, {60, 0, 1860, 1080}},
      {"a panel at the top, by its place",
       right,
       {strutAlong({1920, 0, 1920, 32}, right, root)},
       {1920, 32, 1920, 1048}},
      {"a panel at the bottom, by its place",
       lower,
       {strutAlong({0, 2110, 1920, 50}, lower, root)},
       {0, 1080, 1920, 1030}},
      {"the right edge", right, {{{3800, 0, 40, 1080}, {{}, {40, 0, 1079}, {}, {}}}}, {1920, 0, 1880, 1080}},
  };
  for (const auto& each : cases) EXPECT_EQ(visiblePixels(each.monitor, root, each.docks), each.visible) << each.what;
  EXPECT_EQ(visiblePixelsFromWorkArea(left, {70, 27, 1850, 1053}), (PixelRect{0, 27, 1920, 1053}));
  EXPECT_EQ(visiblePixelsFromWorkArea(left, {0, 27, 1920, 1013}), (PixelRect{0, 27, 1920, 1013}));
  for (const PixelRect& area : {PixelRect{}, left, PixelRect{0, 900, 1920, 180}}) {
    EXPECT_EQ(visiblePixelsFromWorkArea(left, area), left) << area.y;
  }
}

TEST(DockStruts, TheMainPanelHasTheTrayOrIsTheLargest) {
  const auto top = [](int thickness, bool tray = false) {
    return DockStrut{{0, 0, 1920, thickness}, {{}, {}, {thickness, 0, 1919}, {}}, tray};
  };
  const auto bottom = [](int thickness, bool tray = false, int width = 1920) {
    const PixelRect bounds{0, 2160 - thickness, width, thickness};
    return DockStrut{bounds, {{}, {}, {}, {thickness, 0, width - 1}}, tray};
  };
  const DockStrut side{{0, 0, 60, 1080}, {{60, 0, 1079}, {}, {}, {}}, true};
  constexpr PixelRect tall{0, 0, 1920, 2160};
  const std::pair<std::vector<DockStrut>, std::optional<PanelEdge>> cases[] = {
      {{}, std::nullopt},
      {{side}, std::nullopt},
      {{side, bottom(40)}, PanelEdge::bottom},
      {{top(26), bottom(48)}, PanelEdge::bottom},
      {{top(26), bottom(48, false, 600)}, PanelEdge::top},
      {{bottom(28), top(28)}, PanelEdge::top},
      {{bottom(48), top(26, true)}, PanelEdge::top},
      {{bottom(20, true), top(26), bottom(48)}, PanelEdge::bottom},
  };
  for (const auto& [docks, edge] : cases) EXPECT_EQ(mainPanelEdge(tall, root, docks), edge) << &docks - &cases[0].first;
  EXPECT_EQ(mainPanelEdge(right, root, std::vector{top(26)}), std::nullopt) << "on another monitor";
}

TEST(FullScreenWindow, CoversTheScreenWhileItIsSeenThere) {
  const struct {
    const char* what;
    FullScreenWindow window;
    bool covers;
  } cases[] = {
      {"on all desktops", {.viewable = true, .onDesktop = 0xFFFFFFFF, .bounds = left}, true},
      {"on a desktop that is not shown", {.viewable = true, .onDesktop = 0, .bounds = left}, false},
      {"not mapped", {.onDesktop = 1, .bounds = left}, false},
      {"minimised but mapped", {.viewable = true, .hidden = true, .onDesktop = 1, .bounds = left}, false},
      {"the desktop itself", {.viewable = true, .desktop = true, .onDesktop = 1, .bounds = left}, false},
      {"a bit more than half", {.viewable = true, .onDesktop = 1, .bounds = {959, 0, 1920, 1080}}, true},
      {"exactly half of it", {.viewable = true, .onDesktop = 1, .bounds = {960, 0, 1920, 1080}}, false},
  };
  for (const auto& c : cases) EXPECT_EQ(coversScreen(c.window, {.current = 1}, left), c.covers) << c.what;
}

TEST(FullScreenWindow, DesktopsAreToldApartByTheirViewports) {
  const FullScreenWindow elsewhere{.viewable = true, .onDesktop = 3, .bounds = left};
  const struct {
    const char* what;
    Numbers current, viewports;
    bool covers;
  } cases[] = {
      {"one desktop for all monitors", {1}, {0, 0, 0, 0}, false},
      {"one for each monitor, the focus is on another", {1}, {0, 0, 1920, 0}, true},
      {"a window manager without desktops", {}, {}, true},
      {"the current one", {3}, {}, true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(coversScreen(elsewhere, desktopsShown(c.current, c.viewports), left), c.covers) << c.what;
  }
}

TEST(Dpms, AnyStateBelowOnIsOffUnlessItIsDisabled) {
  EXPECT_FALSE(displaysAreOff(true, 0) || displaysAreOff(false, 1));
  EXPECT_TRUE(displaysAreOff(true, 1) && displaysAreOff(true, 3));
}

constexpr PixelRect strip{10, 20, 6, 3};

PanelPicture panel(const PixelRect& bounds, std::uint32_t argb, bool alpha, std::vector<PixelRect> shape = {}) {
  const Numbers pixels(static_cast<std::size_t>(bounds.width * bounds.height), argb);
  const auto bytes = std::as_bytes(std::span(pixels));
  return {bounds, alpha, std::move(shape), {bytes.begin(), bytes.end()}};
}

Numbers compose(const std::vector<PanelPicture>& panels, bool hideEdges = false) {
  std::vector<const PanelPicture*> pointers;
  for (const PanelPicture& each : panels) pointers.push_back(&each);
  std::vector<std::byte> rows{std::byte{99}};
  composePanels(strip, pointers, rows);
  if (hideEdges) hidePanelEdges(strip, pointers, rows);
  Numbers result(rows.size() / 4);
  std::memcpy(result.data(), rows.data(), result.size() * 4);
  return result;
}

TEST(PanelPicture, PanelsLieOverATransparentGroundInTheirShapes) {
  EXPECT_EQ(compose({}), Numbers(18, 0));
  const std::uint32_t a = 0xFF112233;
  const std::uint32_t b = 0x40102030;
  EXPECT_EQ(compose({panel({8, 18, 4, 4}, 0x00112233, false), panel({14, 22, 9, 9}, b, true)}),
            (Numbers{a, a, 0, 0, 0, 0, a, a, 0, 0, 0, 0, 0, 0, 0, 0, b, b}));
  EXPECT_EQ(compose({panel({0, 0, 100, 100}, a, false, {{11, 0, 2, 21}, {-5, 22, 16, 500}})}),
            (Numbers{0, a, a, 0, 0, 0, 0, 0, 0, 0, 0, 0, a, 0, 0, 0, 0, 0}));
}

TEST(PanelPicture, PremultipliedColorsBlendAndNeverOverflow) {
  using Pair = std::pair<std::uint32_t, std::uint32_t>;
  for (const auto& [upper, mixed] : {Pair{0, 0xFF804020}, {0x80800000, 0xFFC02010}, {0x01FFFFFF, 0xFFFFFFFF}}) {
    EXPECT_EQ(compose({panel(strip, 0xFF804020, false), panel(strip, upper, true)}).front(), mixed) << upper;
  }
}

TEST(PanelPicture, BesideThePanelsIsTheMeanColorOfTheirEdges) {
  EXPECT_EQ(compose({panel({0, 0, 3, 3}, 0xFFFFFFFF, false)}, true), Numbers(18, 0)) << "beside the strip";
  EXPECT_EQ(compose({panel({0, 0, 100, 22}, 0xFF204060, false)}, true), Numbers(18, 0xFF204060));
  // Two pixels of the first and one of the second have a neighbour that no panel covers.
  const auto mean = compose(
      {panel({10, 20, 2, 2}, 0xFF300000, false, {{10, 20, 2, 1}}), panel({15, 22, 1, 1}, 0xFF600000, false)}, true);
  Numbers expected(18, 0xFF400000);
  expected[0] = expected[1] = 0xFF300000;
  expected[17] = 0xFF600000;
  EXPECT_EQ(mean, expected);
}

TEST(PanelPicture, APictureThatIsCutShortShowsNothing) {
  for (const std::size_t bytes : {0U, 4U, 71U, 73U}) {
    PanelPicture broken = panel(strip, 0xFFFFFFFF, bytes % 2 == 0);
    broken.pixels.resize(bytes);
    EXPECT_EQ(compose({broken}, true), Numbers(18, 0)) << bytes;
  }
}

TEST(PanelVisibility, AHintSpeaksIfHalfOfTheStripIsCoveredByWhatLetsNoLightThrough) {
  constexpr std::uint32_t solid = 0xFFFFFFFFU;
  const auto opaque = [](int x, int width) { return PanelFacts{{x, 0, width, 32}, 24, solid, std::nullopt}; };
  const auto withAlpha = [](std::optional<double> mean) { return PanelFacts{{0, 0, 1000, 32}, 32, solid, mean}; };
  const std::pair<std::vector<PanelFacts>, const char*> cases[] = {
      {{opaque(0, 400), opaque(100, 300)}, ""},
      {{{{0, 500, 1000, 32}, 24, solid, std::nullopt}}, ""},
      {{{{0, 0, 1000, 32}, 24, 0x80000000U, std::nullopt}}, ""},
      {{withAlpha(0.89)}, ""},
      {{withAlpha(0.91)}, "is opaque"},
      {{withAlpha(std::nullopt)}, "may hide"},
      {{opaque(0, 250), opaque(750, 250)}, "is opaque"},
  };
  for (const auto& [panels, words] : cases) {
    const Visibility seen = visibilityUnder({0, 0, 1000, 32}, PanelEdge::top, panels, true);
    EXPECT_NE(seen.hint.find(words), std::string::npos) << seen.hint;
    EXPECT_EQ(seen.hint.empty(), *words == '\0') << seen.hint;
    EXPECT_EQ(seen.kind, *words == '\0' ? Visibility::Kind::seen : Visibility::Kind::mayBeHidden);
    EXPECT_EQ(seeThrough(panels.front(), false), SeeThrough::no) << "nothing is see-through without a compositor";
  }
}

TEST(PanelVisibility, ItIsHiddenOnlyIfPanelsThatCoverLeaveNothingFree) {
  const auto covering = [](const PixelRect& bounds, bool covers = true) {
    PanelFacts facts;
    facts.bounds = bounds;
    facts.covers = covers;
    return facts;
  };
  const std::pair<std::vector<PanelFacts>, bool> cases[] = {
      {{covering({-5, 90, 1010, 50})}, true},
      {{covering({0, 100, 1000, 32}, false)}, false},
      {{covering({0, 100, 1000, 31})}, false},
      {{covering({0, 100, 999, 32})}, false},
      {{covering({0, 100, 600, 32}), covering({500, 100, 500, 32})}, true},
      {{covering({0, 100, 600, 32}), covering({601, 100, 399, 32})}, false},
      {{covering({0, 110, 1000, 10}), covering({0, 120, 1000, 12}), covering({0, 100, 1000, 10})}, true},
  };
  for (const auto& [panels, hidden] : cases) {
    const Visibility seen = visibilityUnder({0, 100, 1000, 32}, PanelEdge::bottom, panels, false);
    EXPECT_EQ(seen.kind == Visibility::Kind::hidden, hidden) << &panels - &cases[0].first;
  }
}

}  // namespace
}  // namespace veloria::tests
