#pragma once

#include "wide/Textures.h"

// textureAt() and what it needs: where to read along x is worked out once for a column of vectors and where along y
// once for a row, so that a read is only loads and sums.
namespace veloria::gpu::cpu::VELORIA_SET {

/// Texels of a row, weighed, each lane its own.
template <int count>
struct Taps {
  int first;  ///< the texel that `at` counts from
  IntLanes at[count];
  FloatLanes weight[count];
  int vectors;  ///< how many vectors from `first` hold all of them: 1, 2, or 0 if more
};
using Linear = Taps<2>;
using Cubic = Taps<4>;

/// The texels from `cell` on with their weights; those outside are the edge's.
template <int count>
VELORIA_INLINE void place(Taps<count>& taps, const Planes& t, IntLanes cell) {
  taps.first = held(cell, t.width)[0];
  UintLanes farthest{};
  for (int i = 0; i < count; ++i) {
    taps.at[i] = held(cell + i, t.width) - taps.first;
    farthest |= (UintLanes)taps.at[i];
  }
  const auto beyond = [&](unsigned vectors) __attribute__((always_inline)) {
    return any((IntLanes)(farthest >= vectors * lanes));
  };
  taps.vectors = !beyond(1) ? 1 : !beyond(2) ? 2 : 0;
}

VELORIA_INLINE Linear linearAt(const sampler2D& s, Float x) {
  const Float at = x * (float)s.planes.width - 0.5F;
  const Float whole = floor(at);
  Linear taps;
  taps.weight[1] = (at - whole).v;
  taps.weight[0] = 1.0F - taps.weight[1];
  place(taps, s.planes, toInt(whole).v);
  return taps;
}

VELORIA_INLINE Cubic cubicAt(const sampler2D& s, Float x) {
  const Float at = x * (float)s.planes.width - 0.5F;
  const Float whole = floor(at);
  const Float f = at - whole;
  const Float g = 1.0F - f;
  Cubic taps;
  taps.weight[0] = (g * g * g * (1.0F / 6.0F)).v;
  taps.weight[1] = ((4.0F - 3.0F * f * f * (2.0F - f)) * (1.0F / 6.0F)).v;
  taps.weight[2] = ((4.0F - 3.0F * g * g * (2.0F - g)) * (1.0F / 6.0F)).v;
  taps.weight[3] = (f * f * f * (1.0F / 6.0F)).v;
  place(taps, s.planes, toInt(whole).v - 1);
  return taps;
}

/// Rows of a texture, weighed: two for each height.
template <int count>
struct Rows {
  int start[2 * count];  ///< floats from the texture's first
  float weight[2 * count];
};
using Rows1 = Rows<1>;
using Rows2 = Rows<2>;
using Rows3 = Rows<3>;

template <int count>
VELORIA_INLINE void place(Rows<count>& rows, int height, const Planes& t, float y, float weight) {
  const float at = y * (float)t.height - 0.5F;
  const float whole = floor(at);
  const int cell = toInt(whole);
  for (int i = 0; i < 2; ++i) {
    rows.start[2 * height + i] = held(cell + i, t.height) * t.stride;
    rows.weight[2 * height + i] = weight * (i == 0 ? 1.0F - (at - whole) : at - whole);
  }
}
VELORIA_INLINE Rows1 rowsAt(const sampler2D& s, float y) {
  Rows1 rows;
  place(rows, 0, s.planes, y, 1.0F);
  return rows;
}
VELORIA_INLINE Rows2 rowsAt(const sampler2D& s, float y0, float weight0, float y1, float weight1) {
  Rows2 rows;
  place(rows, 0, s.planes, y0, weight0);
  place(rows, 1, s.planes, y1, weight1);
  return rows;
}
VELORIA_INLINE Rows3 rowsAt(const sampler2D& s, float y0, float weight0, float y1, float weight1, float y2,
                            float weight2) {
  Rows3 rows;
  place(rows, 0, s.planes, y0, weight0);
  place(rows, 1, s.planes, y1, weight1);
  place(rows, 2, s.planes, y2, weight2);
  return rows;
}

/// The sum of one channel's rows for the texels from `from` on.
template <int count>
VELORIA_INLINE FloatLanes summed(const float* from, const Rows<count>& rows) {
  FloatLanes sum = load(from + rows.start[0]) * rows.weight[0];
  for (int i = 1; i < 2 * count; ++i) sum += load(from + rows.start[i]) * rows.weight[i];
  return sum;
}

/// If the texels lie too far apart for loads.
template <int taps, int heights>
__attribute__((noinline, pure)) static FloatLanes gathered(const float* from, const Taps<taps>& across,
                                                           const Rows<heights>& rows) {
  FloatLanes all{};
  for (int i = 0; i < taps; ++i) {
    FloatLanes sum{};
    for (int k = 0; k < 2 * heights; ++k)
      sum += gather(from + rows.start[k], across.first + across.at[i]) * rows.weight[k];
    all += sum * across.weight[i];
  }
  return all;
}

template <int taps, int heights>
VELORIA_INLINE vec4 textureAt(const sampler2D& s, const Taps<taps>& across, const Rows<heights>& rows) {
  const auto perChannel = [&](auto one) __attribute__((always_inline)) {
    const auto& channel = s.planes.channel;
    return vec4(Float(one(channel[0])), Float(one(channel[1])), Float(one(channel[2])), Float(one(channel[3])));
  };
  const auto weighed = [&](auto texel) __attribute__((always_inline)) {
    FloatLanes sum = texel(across.at[0]) * across.weight[0];
    for (int i = 1; i < taps; ++i) sum += texel(across.at[i]) * across.weight[i];
    return sum;
  };
  if (across.vectors == 1) {
    return perChannel([&](const float* p) __attribute__((always_inline)) {
      const FloatLanes row = summed(p + across.first, rows);
      return weighed([&](IntLanes at) __attribute__((always_inline)) { return permute(row, at); });
    });
  }
  if (across.vectors == 2) {
    return perChannel([&](const float* p) __attribute__((always_inline)) {
      const FloatLanes near = summed(p + across.first, rows);
      const FloatLanes far = summed(p + across.first + lanes, rows);
      return weighed([&](IntLanes at) __attribute__((always_inline)) { return permute(near, far, at); });
    });
  }
  return perChannel([&](const float* p) __attribute__((always_inline)) { return gathered(p, across, rows); });
}

}  // namespace veloria::gpu::cpu::VELORIA_SET
