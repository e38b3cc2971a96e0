#include "render/WallpaperPalette.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <vector>

namespace veloria {

namespace {

constexpr std::size_t hueBins = 18;
constexpr std::size_t stopCount = 4;
constexpr float darkest = 0.08F;
constexpr float leastChroma = 0.00001F;
constexpr float grayVote = 0.02F;
constexpr float darkGain = 1.4F;
constexpr float leastBrightness = 0.001F;
constexpr float whiteShare = 0.55F;
constexpr ColorStop insteadOfBlack{0.3F, 0.4F, 0.6F};

struct HueBin {
  double weight = 0;
  std::array<double, 3> sums{};

  ColorStop mean() const {
    return {static_cast<float>(sums[0] / weight), static_cast<float>(sums[1] / weight),
            static_cast<float>(sums[2] / weight)};
  }
};
using Histogram = std::array<HueBin, hueBins>;

/// The hue on the colour hexagon, 0 to 1.
float hue(const ColorStop& c, float brightest, float chroma) {
  if (!(chroma > leastChroma)) return 0;
  const auto [red, green, blue] = c;
  float sixth = 0;
  if (brightest == red) {
    sixth = (green - blue) / chroma;
  } else if (brightest == green) {
    sixth = (blue - red) / chroma + 2;
  } else {
    sixth = (red - green) / chroma + 4;
  }
  const float turn = sixth / 6;
  return turn < 0 ? turn + 1 : turn;
}

void vote(Histogram& histogram, const ColorStop& c) {
  const auto [least, most] = std::minmax({c[0], c[1], c[2]});
  if (!(most > darkest)) return;
  const float chroma = most - least;
  const float saturation = chroma / most;
  const float weight = std::min(most * darkGain, 1.0F) * saturation * saturation + grayVote;
  const auto bin = static_cast<std::size_t>(hue(c, most, chroma) * static_cast<float>(hueBins));
  HueBin& chosen = histogram[std::min(bin, hueBins - 1)];
  chosen.weight += weight;
  for (std::size_t i = 0; i < c.size(); ++i) chosen.sums[i] += double{weight} * c[i];
}

Histogram histogramOf(std::span<const ColorStop> pixels) {
  Histogram histogram{};
  for (const ColorStop& pixel : pixels) {
    if (!std::ranges::all_of(pixel, [](float value) { return std::isfinite(value); })) continue;
    vote(histogram,
         {std::clamp(pixel[0], 0.0F, 1.0F), std::clamp(pixel[1], 0.0F, 1.0F), std::clamp(pixel[2], 0.0F, 1.0F)});
  }
  return histogram;
}

double luminance(const ColorStop& c) {
  return 0.2126 * c[0] + 0.7152 * c[1] + 0.0722 * c[2];
}

}  // namespace

ColorStop boosted(const ColorStop& color) {
  const float most = std::ranges::max(color);
  if (!(most > leastBrightness)) return insteadOfBlack;
  ColorStop result = color;
  for (float& c : result) c = std::min(c / most, 1.0F);
  const float white = whiteShare * std::ranges::min(result);
  for (float& c : result) c = std::max((c - white) / (1 - white + leastChroma), 0.0F);
  return result;
}

std::optional<Palette> wallpaperPalette(std::span<const ColorStop> pixels) {
  const Histogram histogram = histogramOf(pixels);
  std::vector<HueBin> voted;
  std::ranges::copy_if(histogram, std::back_inserter(voted), [](const HueBin& bin) { return bin.weight > 0; });
  if (voted.size() < 2) return std::nullopt;
  std::ranges::stable_sort(voted, std::greater{}, &HueBin::weight);

  std::vector<ColorStop> stops;
  for (std::size_t i = 0; i < stopCount; ++i) stops.push_back(voted[std::min(i, voted.size() - 1)].mean());
  std::ranges::stable_sort(stops, std::less{}, luminance);
  std::ranges::transform(stops, stops.begin(), boosted);
  return Palette{"Custom", std::move(stops)};
}

}  // namespace veloria
