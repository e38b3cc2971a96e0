#pragma once

#include "gpu/cpu/Call.h"
#include "wide/Lattice.h"
#include "wide/Sampling.h"

namespace veloria::gpu::cpu::VELORIA_SET {

/// A uniform block's bytes, as whatever structure they are assigned to.
struct BlockBytes {
  const void* bytes;
  template <class Block>
  VELORIA_INLINE operator Block() const {
    Block block;
    __builtin_memcpy(&block, bytes, sizeof block);
    return block;
  }
};

/// What a function finds around itself; the spelled source becomes a structure derived from it.
struct Kernel {
  struct Invocation {
    Int x, y;
    VELORIA_INLINE ivec2 xy() const { return {x, y}; }
  };

  const Call& call;
  Lattices& lattices;
  Invocation gl_GlobalInvocationID;
  vec4 gl_FragCoord;
  vec2 uv;

  VELORIA_INLINE Kernel(const Call& of, Lattices& kept) : call(of), lattices(kept) {}
  VELORIA_INLINE BlockBytes blockBytes() const { return {call.bytes}; }
  // Rows are whole, and a row's last vector may be written beyond its end.
  static VELORIA_INLINE constexpr bool outside(ivec2, ivec2) { return false; }
  /// Of a place that is the same for all pixels of a row.
  static VELORIA_INLINE float rowOf(vec2 place) { return place.y.v[0]; }
  static constexpr int reach = -1;
};

// A macro, since what it is given is the name of a function among the members.
#define neighbours(valueAt, x, row, seed, phase)                   \
  lattices.neighboursOf(x, Uint(row).v[0], Uint(seed).v[0],        \
                        [&](Uint at) __attribute__((always_inline)) { return valueAt(at, row, seed, phase); })

/// Vectors whose columns' values are kept while the rows go by.
constexpr int strip = 16;

/// Calls `place(x, y)` for the rows' vectors, and then `run`, strip by strip; makes the values of the columns and of the
/// rows first, if the function has some.
template <class Function, class Place, class Run>
VELORIA_INLINE void eachVector(Function& function, const Planes& target, int first, int end, Place place, Run run) {
  if constexpr (requires { typename Function::Column; }) {
    typename Function::Column columns[strip];
    for (int left = 0; left < target.width; left += strip * lanes) {
      const int right = min(left + strip * lanes, target.width);
      for (int x = left; x < right; x += lanes) {
        place(x, first);
        function.column = &columns[(x - left) / lanes];
        function.makeColumn();
      }
      for (int y = first; y < end; ++y) {
        if constexpr (requires { typename Function::Row; }) {
          place(left, y);
          function.makeRow();
        }
        for (int x = left; x < right; x += lanes) {
          place(x, y);
          function.column = &columns[(x - left) / lanes];
          run(x, y);
        }
      }
    }
  } else {
    for (int y = first; y < end; ++y) {
      for (int x = 0; x < target.width; x += lanes) {
        place(x, y);
        run(x, y);
      }
    }
  }
}

template <class Function>
void computeRows(const Call& call, int first, int end) {
  Lattices lattices;
  Function function(call, lattices);
  eachVector(
      function, call.target, first, end,
      [&](int x, int y) __attribute__((always_inline)) { function.gl_GlobalInvocationID = {Int(laneNumbers() + x), Int(y)}; },
      [&](int, int) __attribute__((always_inline)) { function.main(); });
}

template <class Function>
void drawRows(const Call& call, int first, int end) {
  Lattices lattices;
  Function function(call, lattices);
  const Planes target = call.target;
  const float width = 1.0F / (float)target.width;
  const float height = 1.0F / (float)target.height;
  eachVector(
      function, target, first, end,
      [&](int x, int y) __attribute__((always_inline)) {
        const Float middleX(toFloats(laneNumbers() + x) + 0.5F);
        const float middleY = (float)y + 0.5F;
        function.gl_FragCoord = vec4(middleX, middleY, 0.0F, 1.0F);
        function.uv = vec2(middleX * width, middleY * height);
      },
      [&](int x, int y) __attribute__((always_inline)) {
        function.main();
        if (target.pixels != nullptr) {
          writePixels(target, x, y, function.result());
        } else {
          writePlanes(target, x, y, function.result());
        }
      });
}

}  // namespace veloria::gpu::cpu::VELORIA_SET
