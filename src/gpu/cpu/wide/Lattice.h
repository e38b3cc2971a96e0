#pragma once

#include "wide/Vectors.h"

// Values of noise's lattices, kept while a pass goes on: neighbouring pixels lie between the same ones.
namespace veloria::gpu::cpu::VELORIA_SET {

/// A part of one line of a lattice: a ring of pages, each of as many places as there are lanes.
struct LatticeLine {
  static constexpr int pages = 16;
  static constexpr int places = pages * lanes;
  unsigned row, seed;
  int page[pages];                   ///< its number along the line, or `none`
  float values[places + 2 * lanes];  ///< the first two pages once more at the end, so that any three are in a row
};

class Lattices {
 public:
  /// The values at x and x + 1. `valueAt` gives those of other places of the same line.
  template <class ValueAt>
  VELORIA_INLINE vec2 neighboursOf(Uint x, unsigned row, unsigned seed, ValueAt valueAt) {
    const unsigned number = ((row ^ seed) * 0x9E3779B1U) >> 27;
    LatticeLine& line = lines_[number];
    if ((begun_ >> number & 1U) == 0U || line.row != row || line.seed != seed) {
      begun_ |= 1U << number;
      line.row = row;
      line.seed = seed;
      for (int& each : line.page) each = none;
    }
    const int first = (int)(x.v[0] - 2U);  // x need not grow from lane to lane
    const int page = first >> bits;
    const IntLanes at = (IntLanes)(x.v - (unsigned)first);
    const float* values = line.values + (first & (LatticeLine::places - 1));
    const auto beyond = [&](int end) __attribute__((always_inline)) {
      return any((IntLanes)((UintLanes)at >= (unsigned)end));
    };
    fill(line, page, valueAt);
    fill(line, page + 1, valueAt);
    if (!beyond(lanes - 1)) {
      const FloatLanes near = load(values);
      return {Float(permute(near, at)), Float(permute(near, at + 1))};
    }
    if (!beyond(2 * lanes - 1)) {
      fill(line, page + 2, valueAt);
      const FloatLanes near = load(values);
      const FloatLanes far = load(values + lanes);
      return {Float(permute(near, far, at)), Float(permute(near, far, at + 1))};
    }
    return {valueAt(x), valueAt(x + 1U)};
  }

 private:
  static constexpr int bits = lanes == 16 ? 4 : lanes == 8 ? 3 : 2;
  static constexpr int none = -0x7FFFFFFF;

  template <class ValueAt>
  static VELORIA_INLINE void fill(LatticeLine& line, int number, ValueAt valueAt) {
    const int place = number & (LatticeLine::pages - 1);
    if (line.page[place] == number) return;
    line.page[place] = number;
    const FloatLanes values = valueAt(Uint((UintLanes)(laneNumbers() + number * lanes))).v;
    store(line.values + place * lanes, values);
    if (place < 2) store(line.values + LatticeLine::places + place * lanes, values);
  }

  unsigned begun_ = 0;  // a bit a line; the rest of a line that was not begun has no value
  LatticeLine lines_[32];
};

}  // namespace veloria::gpu::cpu::VELORIA_SET
