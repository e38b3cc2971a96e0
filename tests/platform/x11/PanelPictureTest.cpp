#include "platform/linux/x11/PanelPicture.h"

#include <gtest/gtest.h>

namespace veloria {
namespace {

using Bytes = std::vector<std::byte>;

Bytes filled(const PixelRect& bounds, std::uint32_t argb) {
  Bytes bytes;
  for (int i = 0; i < bounds.width * bounds.height; ++i) {
    for (const unsigned shift : {0U, 8U, 16U, 24U}) bytes.push_back(static_cast<std::byte>(argb >> shift & 0xFF));
  }
  return bytes;
}

PanelPicture panel(const PixelRect& bounds, std::uint32_t argb, bool alpha, std::vector<PixelRect> shape = {}) {
  return {bounds, alpha, std::move(shape), filled(bounds, argb)};
}

constexpr PixelRect strip{10, 20, 6, 3};

std::vector<std::uint32_t> compose(const std::vector<PanelPicture>& panels, bool hideEdges = false) {
  std::vector<const PanelPicture*> pointers;
  for (const PanelPicture& each : panels) pointers.push_back(&each);
  Bytes rows{std::byte{99}};
  composePanels(strip, pointers, rows);
  if (hideEdges) hidePanelEdges(strip, pointers, rows);
  std::vector<std::uint32_t> result;
  for (std::size_t i = 0; i + 3 < rows.size(); i += 4) {
    std::uint32_t pixel = 0;
    for (std::size_t k = 4; k-- > 0;) pixel = pixel << 8 | std::to_integer<std::uint32_t>(rows[i + k]);
    result.push_back(pixel);
  }
  return result;
}

TEST(PanelPicture, laysPanelsOverATransparentGround) {
  EXPECT_EQ(compose({}), std::vector<std::uint32_t>(18, 0));
  const auto picture = compose({panel({8, 18, 4, 4}, 0x00112233, false), panel({14, 22, 9, 9}, 0x40102030, true)});
  const std::vector<std::uint32_t> expected{0xFF112233, 0xFF112233, 0, 0, 0,          0,  //
                                            0xFF112233, 0xFF112233, 0, 0, 0,          0,  //
                                            0,          0,          0, 0, 0x40102030, 0x40102030};
  EXPECT_EQ(picture, expected);
}

TEST(PanelPicture, blendsPremultipliedColoursAndNeverOverflows) {
  const PixelRect all = strip;
  struct Case {
    std::uint32_t upper;
    std::uint32_t expected;
  };
  for (const Case& each : {Case{0x00000000, 0xFF804020},
                           {0xFF010203, 0xFF010203},
                           {0x80800000, 0xFFC02010},
                           {0x00FFFFFF, 0xFFFFFFFF},
                           {0x01FFFFFF, 0xFFFFFFFF}}) {
    EXPECT_EQ(compose({panel(all, 0xFF804020, false), panel(all, each.upper, true)}).front(), each.expected)
        << std::hex << each.upper;
  }
}

TEST(PanelPicture, showsOnlyTheShape) {
  const auto picture = compose({panel({0, 0, 100, 100}, 0xFF0000FF, false, {{11, 0, 2, 21}, {-5, 22, 16, 500}})});
  const std::vector<std::uint32_t> expected{0,          0xFF0000FF, 0xFF0000FF, 0, 0, 0,  //
                                            0,          0,          0,          0, 0, 0,  //
                                            0xFF0000FF, 0,          0,          0, 0, 0};
  EXPECT_EQ(picture, expected);
}

TEST(PanelPicture, whatIsBesideThePanelsLooksLikeTheirEdges) {
  const std::vector<std::uint32_t> empty(18, 0);
  EXPECT_EQ(compose({}, true), empty);
  EXPECT_EQ(compose({panel({0, 0, 3, 3}, 0xFFFFFFFF, false)}, true), empty) << "beside the strip";
  EXPECT_EQ(compose({panel(strip, 0xFF204060, false)}, true), std::vector<std::uint32_t>(18, 0xFF204060));
  EXPECT_EQ(compose({panel({0, 0, 100, 22}, 0xFF204060, false)}, true), std::vector<std::uint32_t>(18, 0xFF204060));
  EXPECT_EQ(compose({panel({0, 0, 100, 22}, 0, true)}, true), empty) << "a panel of glass";
  // Two pixels of the first and one of the second have a neighbour that no panel covers.
  const auto mean = compose(
      {panel({10, 20, 2, 2}, 0xFF300000, false, {{10, 20, 2, 1}}), panel({15, 22, 1, 1}, 0xFF600000, false)}, true);
  const std::uint32_t ground = 0xFF400000;
  EXPECT_EQ(mean, (std::vector<std::uint32_t>{0xFF300000, 0xFF300000, ground, ground, ground, ground,  //
                                              ground, ground, ground, ground, ground, ground,          //
                                              ground, ground, ground, ground, ground, 0xFF600000}));
}

TEST(PanelPicture, aPictureThatIsCutShortShowsNothing) {
  for (const std::size_t bytes : {0U, 4U, 71U, 73U}) {
    PanelPicture broken = panel(strip, 0xFFFFFFFF, bytes % 2 == 0);
    broken.pixels.resize(bytes);
    EXPECT_EQ(compose({broken}, true), std::vector<std::uint32_t>(18, 0)) << bytes;
  }
  Bytes rows;
  composePanels({0, 0, -4, 7}, {}, rows);
  hidePanelEdges({0, 0, -4, 7}, {}, rows);
  EXPECT_TRUE(rows.empty());
}

}  // namespace
}  // namespace veloria
