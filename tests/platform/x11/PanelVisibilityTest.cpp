#include "platform/linux/x11/PanelVisibility.h"

#include <gtest/gtest.h>

#include <vector>

namespace veloria {
namespace {

constexpr PixelRect strip{0, 0, 1000, 32};
constexpr std::uint32_t half = 0x80000000U;

TEST(PanelVisibility, tellsWhatLetsTheLightThrough) {
  const PanelFacts plain{strip, 24, 0xFFFFFFFFU, std::nullopt};
  const PanelFacts faded{strip, 24, half, std::nullopt};
  const PanelFacts clear{strip, 32, 0xFFFFFFFFU, 0.4};
  const PanelFacts filled{strip, 32, 0xFFFFFFFFU, 0.97};
  const PanelFacts unreadable{strip, 32, 0xFFFFFFFFU, std::nullopt};
  EXPECT_EQ(seeThrough(plain, true), SeeThrough::no);
  EXPECT_EQ(seeThrough(faded, true), SeeThrough::yes);
  EXPECT_EQ(seeThrough(clear, true), SeeThrough::yes);
  EXPECT_EQ(seeThrough(filled, true), SeeThrough::no);
  EXPECT_EQ(seeThrough(unreadable, true), SeeThrough::unknown);
  for (const PanelFacts& panel : {plain, faded, clear, filled, unreadable}) {
    EXPECT_EQ(seeThrough(panel, false), SeeThrough::no) << "nothing is see-through without a compositor";
  }
}

TEST(PanelVisibility, speaksOnlyWhenHalfOfTheStripIsCovered) {
  const auto opaque = [](int x, int width) { return PanelFacts{{x, 0, width, 32}, 24, 0xFFFFFFFFU, std::nullopt}; };
  const auto unknown = [](int x, int width) { return PanelFacts{{x, 0, width, 32}, 32, 0xFFFFFFFFU, std::nullopt}; };
  const auto hint = [](std::vector<PanelFacts> panels) { return panelHint(strip, panels, true); };
  EXPECT_EQ(hint({}), "");
  EXPECT_EQ(hint({opaque(0, 400)}), "");
  EXPECT_EQ(hint({opaque(0, 400), opaque(100, 300)}), "") << "two panels over the same part count once";
  EXPECT_EQ(hint({{{0, 500, 1000, 32}, 24, 0xFFFFFFFFU, std::nullopt}}), "") << "a panel elsewhere";
  EXPECT_NE(hint({opaque(0, 300), opaque(700, 300)}).find("is opaque"), std::string::npos);
  EXPECT_NE(hint({unknown(0, 1000)}).find("may hide"), std::string::npos);
  EXPECT_NE(hint({opaque(-5000, 20000)}).find("is opaque"), std::string::npos);
  EXPECT_EQ(panelHint({}, std::vector<PanelFacts>{opaque(0, 1000)}, true), "");
}

}  // namespace
}  // namespace veloria
