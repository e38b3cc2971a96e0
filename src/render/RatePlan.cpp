#include "render/RatePlan.h"

#include <algorithm>

namespace veloria {

namespace {

constexpr int largestDivisor = 4;
constexpr double tooMuch = 0.92;
constexpr double leavesRoom = 0.75;
constexpr int judgementsOfTooMuch = 2;
constexpr int longestPatience = 240;
constexpr int minute = 120;

}  // namespace

bool RatePlan::judge(double load) {
  sinceRaised_ = std::min(sinceRaised_ + 1, minute + 1);
  busy_ = load / divisor_ > tooMuch ? busy_ + 1 : 0;
  idle_ = divisor_ > 1 && load / (divisor_ - 1) < leavesRoom ? idle_ + 1 : 0;
  if (busy_ >= judgementsOfTooMuch && divisor_ < largestDivisor) {
    patience_ = sinceRaised_ <= minute ? std::min(patience_ * 2, longestPatience) : shortestPatience;
    ++divisor_;
  } else if (idle_ >= patience_) {
    sinceRaised_ = 0;
    --divisor_;
  } else {
    return false;
  }
  busy_ = 0;
  idle_ = 0;
  return true;
}

}  // namespace veloria
