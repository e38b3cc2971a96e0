#pragma once

#include <QImage>
#include <iosfwd>

namespace veloria::tests {

/// How far two pictures are apart, over all channels of the premultiplied pixels (so that the colour of what is
/// transparent does not count).
struct PictureDifference {
  double mean = 0;      ///< mean absolute difference, 0 to 255
  double farShare = 0;  ///< share of pixels with a channel that is off by more than farStep
};

inline constexpr int farStep = 16;

/// The tolerance. Another GPU, driver or compiler rounds differently, and the fluid carries that along. Solving the
/// pressure with a sixth more iterations, or half a percent more force, changes more than rounding does and moves the
/// mean of these pictures by 0.05 and no pixel by farStep. What people tell apart in a comparison, such as 5 % of
/// exposure or of opacity, moves the mean by 1 and more. The limit lies between, nearer to the latter. The share of far
/// pixels catches what is small but plain: a lost letter, an edge in another place.
inline constexpr double largestMean = 0.8;
inline constexpr double largestFarShare = 0.005;

/// `a` and `b` are of the same size.
PictureDifference differenceOf(const QImage& a, const QImage& b);

bool isSameLook(const PictureDifference& difference);

/// Both pictures and four times their difference, one below the other, on black.
QImage comparison(const QImage& expected, const QImage& actual);

std::ostream& operator<<(std::ostream& out, const PictureDifference& difference);

}  // namespace veloria::tests
