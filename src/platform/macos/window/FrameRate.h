#pragma once

#include <algorithm>
#include <cmath>

namespace veloria {

/// The rate to ask a view for, in whole frames a second: the nearest one, at least 1 and at most 240.
inline long viewFrameRate(double wanted) {
  constexpr double highest = 240;
  return wanted > 1 ? std::lround(std::min(wanted, highest)) : 1;
}

}  // namespace veloria
