#include "ui/controls/SettingValue.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace veloria {

namespace {

/// The function of the value in which the travel is linear.
double warp(Curve curve, double x) {
  switch (curve) {
    case Curve::linear:
      return x;
    case Curve::squared:
      return std::copysign(std::sqrt(std::abs(x)), x);
    case Curve::cubed:
      return std::cbrt(x);
    case Curve::logarithmic:
      return std::log(x);
    case Curve::nearOne:
      return -std::log(1 - x);
  }
  return x;
}

double unwarp(Curve curve, double y) {
  switch (curve) {
    case Curve::linear:
      return y;
    case Curve::squared:
      return y * std::abs(y);
    case Curve::cubed:
      return y * y * y;
    case Curve::logarithmic:
      return std::exp(y);
    case Curve::nearOne:
      return 1 - std::exp(-y);
  }
  return y;
}

double held(const NumberRange& range, double value) {
  return bounded(value, {range.minimum, range.maximum});
}

double rounded(const NumberRange& range, double value) {
  const double scale = std::pow(10.0, range.decimals);
  return held(range, std::round(value * scale) / scale);
}

}  // namespace

SettingKind kindOf(const Setting& setting) {
  if (std::holds_alternative<bool NimbraConfig::*>(setting.field)) return SettingKind::toggle;
  const bool number = std::holds_alternative<double NimbraConfig::*>(setting.field) ||
                      std::holds_alternative<std::int64_t NimbraConfig::*>(setting.field);
  return number ? SettingKind::number : SettingKind::choice;
}

double valueIn(const NimbraConfig& config, const Setting& setting) {
  return std::visit([&](auto member) { return static_cast<double>(config.*member); }, setting.field);
}

void setValue(NimbraConfig& config, const Setting& setting, double value) {
  if (std::isnan(value)) return;
  std::visit(
      [&](auto member) {
        using Value = std::remove_reference_t<decltype(config.*member)>;
        if constexpr (std::is_same_v<Value, bool>) {
          config.*member = value != 0;
        } else if constexpr (std::is_same_v<Value, double>) {
          config.*member = held(setting.range, value);
        } else if constexpr (std::is_same_v<Value, std::int64_t>) {
          config.*member = std::llround(held(setting.range, value));
        } else {
          const double last = static_cast<double>(rawValues<Value>.size() - 1);
          config.*member = static_cast<Value>(std::lround(std::clamp(value, 0.0, last)));
        }
      },
      setting.field);
}

bool isDefault(const NimbraConfig& config, const Setting& setting) {
  return std::visit([&](auto member) { return config.*member == NimbraConfig().*member; }, setting.field);
}

void resetToDefault(NimbraConfig& config, const Setting& setting) {
  std::visit([&](auto member) { config.*member = NimbraConfig().*member; }, setting.field);
}

double travelOf(const NumberRange& range, double value) {
  const double low = warp(range.curve, range.minimum);
  const double high = warp(range.curve, range.maximum);
  return (warp(range.curve, held(range, value)) - low) / (high - low);
}

double valueAt(const NumberRange& range, double travel) {
  const double low = warp(range.curve, range.minimum);
  const double high = warp(range.curve, range.maximum);
  return rounded(range, unwarp(range.curve, low + std::clamp(travel, 0.0, 1.0) * (high - low)));
}

double movedBy(const NumberRange& range, double value, double travel) {
  const double there = valueAt(range, travelOf(range, value) + travel);
  const double next = steppedBy(range, value, travel < 0 ? -1 : 1);
  return travel < 0 ? std::min(there, next) : std::max(there, next);
}

double steppedBy(const NumberRange& range, double value, int steps) {
  return rounded(range, held(range, value) + steps * range.step);
}

}  // namespace veloria
