#pragma once

#include <algorithm>

namespace veloria {

/// The numbers from `low` to `high`, both included.
struct Range {
  double low = 0;
  double high = 0;
};

/// `value` clamped to the range; the low end for NaN.
constexpr double bounded(double value, Range range) {
  return value > range.low ? std::min(value, range.high) : range.low;
}

}  // namespace veloria
