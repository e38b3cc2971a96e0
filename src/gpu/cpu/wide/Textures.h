#pragma once

#include "gpu/cpu/Call.h"
#include "wide/Vectors.h"

// GLSL's samplers and images over planes of floats. Neighbouring pixels mostly read neighbouring texels, so a read first
// tries to load whole vectors and to choose from them.
namespace veloria::gpu::cpu::VELORIA_SET {

struct sampler2D {
  Planes planes;
};
struct image2D {
  Planes planes;
};

VELORIA_INLINE ivec2 textureSize(const sampler2D& s, int) {
  return {s.planes.width, s.planes.height};
}
VELORIA_INLINE ivec2 imageSize(const image2D& i) {
  return {i.planes.width, i.planes.height};
}

/// True if all lanes are as the first one is.
VELORIA_INLINE bool isEven(IntLanes value) {
  return !any(value ^ splat(value[0]));
}

VELORIA_INLINE IntLanes held(IntLanes at, int count) {
  return min(max(Int(at), 0), Int(count - 1)).v;
}
VELORIA_INLINE int held(int at, int count) {
  return min(max(at, 0), count - 1);
}

/// The texel at `at`, which must lie in the texture.
VELORIA_INLINE vec4 texel(const Planes& t, ivec2 at) {
  if (isEven(at.x.v - laneNumbers()) && isEven(at.y.v)) {
    const int from = at.y.v[0] * t.stride + at.x.v[0];
    return {Float(load(t.channel[0] + from)), Float(load(t.channel[1] + from)), Float(load(t.channel[2] + from)),
            Float(load(t.channel[3] + from))};
  }
  const IntLanes from = at.y.v * t.stride + at.x.v;
  return {Float(gather(t.channel[0], from)), Float(gather(t.channel[1], from)), Float(gather(t.channel[2], from)),
          Float(gather(t.channel[3], from))};
}
/// As above; what lies outside is the edge's, so that no address of a function's is ever outside the texture.
VELORIA_INLINE vec4 heldTexel(const Planes& t, ivec2 at) {
  return texel(t, {Int(held(at.x.v, t.width)), Int(held(at.y.v, t.height))});
}
VELORIA_INLINE vec4 imageLoad(const image2D& i, ivec2 at) {
  return texel(i.planes, at);
}
VELORIA_INLINE vec4 texelFetch(const sampler2D& s, ivec2 at, int) {
  return texel(s.planes, at);
}

VELORIA_INLINE FloatLanes blended(FloatLanes a, FloatLanes b, FloatLanes share) {
  return a + (b - a) * share;
}

/// Four texels of one channel, each lane its own.
__attribute__((noinline, pure)) static FloatLanes gathered(const float* from, IntLanes top, IntLanes low, IntLanes left,
                                                           IntLanes right, FloatLanes fx, FloatLanes fy) {
  return blended(blended(gather(from, top + left), gather(from, top + right), fx),
                 blended(gather(from, low + left), gather(from, low + right), fx), fy);
}

/// Bilinear, held at the edges.
VELORIA_INLINE vec4 textureLod(const sampler2D& s, vec2 uv, float) {
  const Planes& t = s.planes;
  const FloatLanes x = uv.x.v * (float)t.width - 0.5F;
  const FloatLanes y = uv.y.v * (float)t.height - 0.5F;
  const FloatLanes wholeX = roundDown(x);
  const FloatLanes fx = x - wholeX;
  const IntLanes cellX = toBoundedInts(wholeX);
  const IntLanes left = held(cellX, t.width);
  const IntLanes right = held(cellX + 1, t.width);
  const auto perChannel = [&](auto one) __attribute__((always_inline)) {
    return vec4(Float(one(t.channel[0])), Float(one(t.channel[1])), Float(one(t.channel[2])),
                Float(one(t.channel[3])));
  };

  if (isEven((IntLanes)y)) {  // one pair of rows for all lanes
    const float wholeY = floor(y[0]);
    const int cellY = toInt(wholeY);
    const float fy = y[0] - wholeY;
    const int first = left[0];
    const int top = held(cellY, t.height) * t.stride + first;
    const int low = held(cellY + 1, t.height) * t.stride + first;
    const IntLanes toLeft = left - first;
    const IntLanes toRight = right - first;
    const UintLanes farthest = (UintLanes)(toLeft | toRight);
    if (!any((IntLanes)(farthest >= (unsigned)lanes))) {
      return perChannel([&](const float* p) __attribute__((always_inline)) {
        const FloatLanes row = blended(load(p + top), load(p + low), splat(fy));
        return blended(permute(row, toLeft), permute(row, toRight), fx);
      });
    }
    if (!any((IntLanes)(farthest >= 2U * lanes))) {
      return perChannel([&](const float* p) __attribute__((always_inline)) {
        const FloatLanes near = blended(load(p + top), load(p + low), splat(fy));
        const FloatLanes far = blended(load(p + top + lanes), load(p + low + lanes), splat(fy));
        return blended(permute(near, far, toLeft), permute(near, far, toRight), fx);
      });
    }
  }

  const FloatLanes wholeY = roundDown(y);
  const FloatLanes fy = y - wholeY;
  const IntLanes cellY = toBoundedInts(wholeY);
  // Lanes that were moved by a smooth flow lie within two vectors of three rows.
  const int first = max(left[0] - 2, 0);
  const int base = cellY[0] - (any((IntLanes)(cellY < cellY[0])) ? 1 : 0);
  const IntLanes toLeft = left - first;
  const IntLanes toRight = right - first;
  const IntLanes lower = cellY - base;
  if (!any((IntLanes)((UintLanes)(toLeft | toRight) >= 2U * lanes) | (IntLanes)((UintLanes)lower > 1U))) {
    const int rows[3] = {held(base, t.height) * t.stride + first, held(base + 1, t.height) * t.stride + first,
                         held(base + 2, t.height) * t.stride + first};
    return perChannel([&](const float* p) __attribute__((always_inline)) {
      const auto row = [&](int from) __attribute__((always_inline)) {
        const FloatLanes near = load(p + from);
        const FloatLanes far = load(p + from + lanes);
        return blended(permute(near, far, toLeft), permute(near, far, toRight), fx);
      };
      const FloatLanes middle = row(rows[1]);
      return blended(lower ? middle : row(rows[0]), lower ? row(rows[2]) : middle, fy);
    });
  }
  const IntLanes top = held(cellY, t.height) * t.stride;
  const IntLanes low = held(cellY + 1, t.height) * t.stride;
  return perChannel([&](const float* p) __attribute__((always_inline)) { return gathered(p, top, low, left, right, fx, fy); });
}
VELORIA_INLINE vec4 texture(const sampler2D& s, vec2 uv) {
  return textureLod(s, uv, 0.0F);
}

VELORIA_INLINE void writePlanes(const Planes& t, int x, int y, vec4 color) {
  const int at = y * t.stride + x;
  store(t.channel[0] + at, color.x.v);
  if (t.channels > 1) store(t.channel[1] + at, color.y.v);
  if (t.channels > 2) store(t.channel[2] + at, color.z.v);
  if (t.channels > 3) store(t.channel[3] + at, color.w.v);
}
VELORIA_INLINE void writePixels(const Planes& t, int x, int y, vec4 color) {
  const auto byte = [](Float f) __attribute__((always_inline)) { return toInts(roundNearest((clamp(f, 0.0F, 1.0F) * 255.0F).v)); };
  const IntLanes first = byte(t.blueFirst ? color.z : color.x);
  const IntLanes third = byte(t.blueFirst ? color.x : color.z);
  const IntLanes packed = first | byte(color.y) << 8 | third << 16 | byte(color.w) << 24;
  std::uint8_t* to = t.pixels + static_cast<long>(y) * t.rowBytes + static_cast<long>(x) * 4;
  if (x + lanes <= t.width) {
    __builtin_memcpy(to, &packed, sizeof packed);
  } else {
    __builtin_memcpy(to, &packed, static_cast<unsigned>(t.width - x) * 4U);
  }
}

/// A compute function writes its own texel only.
VELORIA_INLINE void imageStore(const image2D& i, ivec2 at, vec4 color) {
  writePlanes(i.planes, at.x.v[0], at.y.v[0], color);
}

}  // namespace veloria::gpu::cpu::VELORIA_SET
