// Functions that live in Metal's headers only. Included at the end of <Metal/Metal.h>.
#pragma once

static inline MTLSize MTLSizeMake(NSUInteger width, NSUInteger height, NSUInteger depth) {
  return {width, height, depth};
}
static inline MTLOrigin MTLOriginMake(NSUInteger x, NSUInteger y, NSUInteger z) {
  return {x, y, z};
}
static inline MTLClearColor MTLClearColorMake(double red, double green, double blue, double alpha) {
  return {red, green, blue, alpha};
}
