// Functions that live in CoreGraphics' headers only. Included at the end of <CoreGraphics/CoreGraphics.h>.
#pragma once

static inline CGPoint CGPointMake(CGFloat x, CGFloat y) {
  return {x, y};
}
static inline CGSize CGSizeMake(CGFloat width, CGFloat height) {
  return {width, height};
}
static inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
  return {{x, y}, {width, height}};
}
