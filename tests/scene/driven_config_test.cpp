// What becomes of the settings record: channels that glide, parameters, the pace, the flash.

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "scene/DriveChannels.h"
#include "scene/DrivenConfig.h"

namespace veloria::tests {
namespace {

using C = NimbraConfig;
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(DriveChannels, AChannelStartsAtItsTargetAndThenGlidesWithItsTimeConstant) {
  for (const auto& [smooth, used] : {std::pair{0.5, 0.5}, {1e-9, 0.001}, {0.0, 0.0}, {-1.0, 0.0}}) {
    DriveChannels channels;
    channels.set("x", 1, smooth);
    channels.step(0.1);
    EXPECT_EQ(channels.values.at("x"), 1);
    channels.set("x", 3, smooth);
    channels.step(0.01);
    EXPECT_DOUBLE_EQ(channels.values.at("x"), used > 0 ? 1 + (1 - std::exp(-0.01 / used)) * 2 : 3) << smooth;
  }
}

TEST(DriveChannels, RecoverFromWhatIsNotFinite) {
  DriveChannels channels;
  for (const double value : {notANumber, 1.0, infinity, 2.0}) {
    channels.set("x", value, 0.3);
    channels.step(1000);
  }
  EXPECT_EQ(channels.values.at("x"), 2);
}

TEST(ScriptParams, DriveTheirFieldWithinTheirRange) {
  const struct {
    std::string keyword;
    double C::*field;
    double low, high;
  } params[] = {
      {"exposure", &C::exposure, 0, 6},       {"opacity", &C::opacity, 0, 1},
      {"contrast", &C::contrast, 0.1, 3},     {"saturation", &C::saturation, 0, 3},
      {"cycle", &C::colorCycle, -0.2, 0.2},   {"huespread", &C::hueSpread, 0, 0.5},
      {"glow", &C::glowAmount, 0, 4},         {"glowspread", &C::glowRadius, 0.2, 6},
      {"ambient", &C::ambientLevel, 0, 0.4},  {"rays", &C::rayIntensity, 0, 1},
      {"raysharp", &C::raySharpness, 0.1, 6}, {"rayscale", &C::rayScale, 0.5, 30},
      {"rayspeed", &C::raySpeed, 0, 1},       {"rayflow", &C::rayFlow, 0, 0.5},
      {"shimmer", &C::shimmer, 0, 2},         {"speed", &C::timeScale, 0.02, 4},
      {"tempo", &C::tempo, 0.15, 2.5},        {"wind", &C::flowSpeed, -6, 6},
      {"shear", &C::flowShear, 0, 8},         {"curl", &C::curlStrength, 0, 10},
      {"curlscale", &C::curlScale, 0.2, 12},  {"vorticity", &C::vorticity, 0, 6},
      {"buoyancy", &C::buoyancy, -3, 4},      {"emit", &C::emitRate, 0, 5},
      {"emitspread", &C::emitScale, 0.3, 14}, {"fade", &C::dyeDissipation, 0.9, 0.9999},
      {"tint", &C::heightTint, 0, 1},
  };
  static_assert(std::size(params) + 1 == scriptParamCount);  // hue wraps instead
  for (const auto& [keyword, field, low, high] : params) {
    for (const auto& [number, wanted] : {std::pair{" -1e9", low}, {" nan", low}, {" inf", low}, {" 1e9", high}}) {
      NimbraConfig config, expected;
      expected.*field = wanted;
      assignParameters(config, NimbraScript::parse("set " + keyword + number), {});
      EXPECT_EQ(config, expected) << keyword << number;
    }
  }
}

TEST(Alert, TheEnvelopeFallsSmoothlyToNothing) {
  const std::initializer_list<std::pair<double, double>> cases{
      {990, 1}, {998, 1}, {999, 0.5}, {999.5, 0.25 * 0.25 * 2.5}, {999.9985, 0}, {1000, 0}, {1001, 0}};
  for (const auto& [now, strength] : cases) EXPECT_DOUBLE_EQ(alertEnvelope(1000, 2, now), strength) << now;
  EXPECT_EQ(alertEnvelope(notANumber, 2, 1), 0);
}

TEST(Alert, ThePeak) {
  const struct {
    double C::*field;
    double calm, flash;
  } cases[] = {
      {&C::exposure, 6, 7.5},     {&C::glowAmount, 4, 5.2},   {&C::emitRate, 5, 6.4},  // may leave their ranges
      {&C::timeScale, 0.18, .63}, {&C::curlStrength, 1, 3.5}, {&C::rayIntensity, 0.5, 0.8}, {&C::saturation, 1.4, 1.8},
      {&C::timeScale, 3, 4},      {&C::curlStrength, 9, 10},  {&C::rayIntensity, 0.9, 1},   {&C::saturation, 2.9, 3}};
  for (const auto& [field, calm, flash] : cases) {
    NimbraConfig config;
    config.*field = calm;
    applyAlert(config, 1, true);
    EXPECT_DOUBLE_EQ(config.*field, flash);
  }
  NimbraConfig config;
  const double calm = config.hueSpread;
  applyAlert(config, 1, false);
  EXPECT_EQ(config.hueSpread, calm) << "the agent gave no colours";
}

}  // namespace
}  // namespace veloria::tests
