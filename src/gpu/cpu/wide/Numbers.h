#pragma once

#include "wide/Lanes.h"

// GLSL's numbers for as many pixels as there are lanes: Float, Int and Uint. Comparing them gives a Mask, which decides
// no branch: pick() chooses by it. A plain float, int or bool is the same for all pixels.
namespace veloria::gpu::cpu::VELORIA_SET {

template <class A, class B>
inline constexpr bool same = false;
template <class A>
inline constexpr bool same<A, A> = true;

struct Mask {
  IntLanes v;
  friend VELORIA_INLINE Mask operator&&(Mask a, Mask b) { return {a.v & b.v}; }
  friend VELORIA_INLINE Mask operator||(Mask a, Mask b) { return {a.v | b.v}; }
  VELORIA_INLINE Mask operator!() const { return {~v}; }
};

#define VELORIA_COMPARISON(Type, op) \
  friend VELORIA_INLINE Mask operator op(Type a, Type b) { return {(IntLanes)(a.v op b.v)}; }
#define VELORIA_COMPARISONS(Type)                                                            \
  VELORIA_COMPARISON(Type, <) VELORIA_COMPARISON(Type, <=) VELORIA_COMPARISON(Type, >)       \
  VELORIA_COMPARISON(Type, >=) VELORIA_COMPARISON(Type, ==) VELORIA_COMPARISON(Type, !=)
#define VELORIA_OPERATOR(Type, op)                                           \
  friend VELORIA_INLINE Type operator op(Type a, Type b) { return Type(a.v op b.v); } \
  VELORIA_INLINE Type& operator op##=(Type b) { return *this = *this op b; }

struct Int {
  IntLanes v;
  Int() = default;
  VELORIA_INLINE explicit Int(IntLanes each) : v(each) {}
  template <class Same>
    requires same<Same, int>
  VELORIA_INLINE Int(Same all) : v(splat(all)) {}
  VELORIA_OPERATOR(Int, +) VELORIA_OPERATOR(Int, -) VELORIA_OPERATOR(Int, *) VELORIA_COMPARISONS(Int)
};

struct Uint {
  UintLanes v;
  Uint() = default;
  VELORIA_INLINE explicit Uint(UintLanes each) : v(each) {}
  template <class Same>
    requires same<Same, unsigned>
  VELORIA_INLINE Uint(Same all) : v(splat(all)) {}
  VELORIA_OPERATOR(Uint, +) VELORIA_OPERATOR(Uint, -) VELORIA_OPERATOR(Uint, *) VELORIA_OPERATOR(Uint, ^)
  VELORIA_OPERATOR(Uint, &) VELORIA_OPERATOR(Uint, |) VELORIA_COMPARISONS(Uint)
  friend VELORIA_INLINE Uint operator>>(Uint a, int bits) { return Uint(a.v >> bits); }
  VELORIA_INLINE Uint& operator>>=(int bits) { return *this = *this >> bits; }
};

struct Float {
  FloatLanes v;
  Float() = default;
  VELORIA_INLINE explicit Float(FloatLanes each) : v(each) {}
  template <class Same>
    requires same<Same, float>
  VELORIA_INLINE Float(Same all) : v(splat(all)) {}
  /// Of a number below 2^31.
  VELORIA_INLINE Float(Uint all) : v(toFloats((IntLanes)all.v)) {}
  VELORIA_OPERATOR(Float, +) VELORIA_OPERATOR(Float, -) VELORIA_OPERATOR(Float, *) VELORIA_OPERATOR(Float, /)
  VELORIA_COMPARISONS(Float)
  VELORIA_INLINE Float operator-() const { return Float(-v); }
};

// GLSL's float(), int() and uint().
VELORIA_INLINE Float toFloat(Int i) { return Float(toFloats(i.v)); }
VELORIA_INLINE Float toFloat(Uint u) { return Float(u); }
VELORIA_INLINE float toFloat(int i) { return (float)i; }
VELORIA_INLINE float toFloat(unsigned u) { return (float)u; }
VELORIA_INLINE Int toInt(Float f) { return Int(toBoundedInts(f.v)); }
VELORIA_INLINE int toInt(float f) { return toBoundedInts(splat(f))[0]; }
VELORIA_INLINE Uint toUint(Int i) { return Uint((UintLanes)i.v); }
VELORIA_INLINE Uint toUint(Float f) { return toUint(toInt(f)); }
VELORIA_INLINE unsigned toUint(int i) { return (unsigned)i; }
VELORIA_INLINE unsigned toUint(float f) { return (unsigned)toInt(f); }

VELORIA_INLINE Float pick(Mask which, Float a, Float b) { return Float(which.v ? a.v : b.v); }
VELORIA_INLINE Int pick(Mask which, Int a, Int b) { return Int(which.v ? a.v : b.v); }

VELORIA_INLINE Int min(Int a, Int b) { return pick(a < b, a, b); }
VELORIA_INLINE Int max(Int a, Int b) { return pick(a > b, a, b); }
VELORIA_INLINE Float min(Float a, Float b) { return Float(least(a.v, b.v)); }
VELORIA_INLINE Float max(Float a, Float b) { return Float(greatest(a.v, b.v)); }
VELORIA_INLINE Float clamp(Float x, Float low, Float high) { return min(max(x, low), high); }
VELORIA_INLINE Float abs(Float x) { return Float((FloatLanes)((IntLanes)x.v & 0x7FFFFFFF)); }
VELORIA_INLINE Float floor(Float x) { return Float(roundDown(x.v)); }
VELORIA_INLINE Float ceil(Float x) { return -floor(-x); }
VELORIA_INLINE Float round(Float x) { return Float(roundNearest(x.v)); }
VELORIA_INLINE Float fract(Float x) { return x - floor(x); }
VELORIA_INLINE Float sqrt(Float x) { return Float(squareRoot(x.v)); }
VELORIA_INLINE Float mix(Float a, Float b, Float t) { return a + (b - a) * t; }
VELORIA_INLINE Float step(Float edge, Float x) { return pick(x < edge, 0.0F, 1.0F); }
VELORIA_INLINE Float smoothstep(Float low, Float high, Float x) {
  const Float t = clamp((x - low) / (high - low), 0.0F, 1.0F);
  return t * t * (3.0F - 2.0F * t);
}

// Minimax polynomials, summed in pairs (Estrin 1960) so that their terms need not wait for each other; within about 2
// units in the last place over the ranges that the functions use.
VELORIA_INLINE Float exp2(Float x) {
  const Float held = clamp(x, -126.0F, 127.0F);
  const Float whole = round(held);
  const Float f = held - whole;
  const Float square = f * f;
  const Float low = (5.550332471162809e-2F * f + 2.402264791363012e-1F) * square + (6.931472028550421e-1F * f + 1.0F);
  const Float high = 1.535336188319500e-4F * square + (1.339887440266574e-3F * f + 9.618437357674640e-3F);
  const Float p = high * (square * square) + low;
  return Float((FloatLanes)((IntLanes)p.v + (toInts(whole.v) << 23)));
}
VELORIA_INLINE Float exp(Float x) { return exp2(x * 1.44269504F); }

/// Of a positive number that is not denormal.
VELORIA_INLINE Float log2(Float x) {
  const IntLanes bits = (IntLanes)x.v;
  const IntLanes exponent = (bits - 0x3F3504F3) >> 23;
  const Float f = Float((FloatLanes)(bits - (exponent << 23))) - 1.0F;  // sqrt(1/2) - 1 to sqrt(2) - 1
  const Float square = f * f;
  const Float fourth = square * square;
  const Float lowest = (2.0000714765e-1F * f - 2.4999993993e-1F) * f + 3.3333331174e-1F;
  const Float middle = (1.1676998740e-1F * f - 1.2420140846e-1F) * square + (1.4249322787e-1F * f - 1.6668057665e-1F);
  const Float highest = 7.0376836292e-2F * f - 1.1514610310e-1F;
  const Float p = (highest * fourth + middle) * (square * f) + lowest;
  const Float natural = p * (f * square) + (f - 0.5F * square);
  return natural * 1.44269504F + Float(toFloats(exponent));
}
VELORIA_INLINE Float pow(Float x, Float y) { return exp2(log2(max(x, 1.17549435e-38F)) * y); }

/// Of a number that is not negative: its inverse by the exponent's third, then two steps of Householder's method of the
/// second order, without a division. 0 gives next to nothing.
VELORIA_INLINE Float cubeRoot(Float x) {
  const Float y = x + 1e-30F;
  Float root((FloatLanes)(0x54A1F000 - toInts(toFloats((IntLanes)y.v) * 0.333333333F)));
  for (int step = 0; step < 2; ++step) {
    const Float error = 1.0F - (y * root) * (root * root);
    root += root * error * (0.222222222F * error + 0.333333333F);
  }
  return y * root * root;
}

/// Of an angle of some turns at most.
VELORIA_INLINE Float sin(Float x) {
  const Float halfTurns = round(clamp(x * 0.318309886F, -8388608.0F, 8388608.0F));
  const Float r = (x - halfTurns * 3.140625F) - halfTurns * 9.67653589793e-4F;
  const Float z = r * r;
  Float p = -2.38889859e-8F;
  p = p * z + 2.75255616e-6F;
  p = p * z - 1.98408743e-4F;
  p = p * z + 8.33333310e-3F;
  p = p * z - 1.66666672e-1F;
  const Float s = p * z * r + r;
  return Float((FloatLanes)((IntLanes)s.v ^ (toInts(halfTurns.v) << 31)));
}
VELORIA_INLINE Float cos(Float x) { return sin(x + 1.57079633F); }

// The same of numbers that are the same for all pixels.
#define VELORIA_OF_ONE(name) \
  VELORIA_INLINE float name(float x) { return name(Float(x)).v[0]; }
#define VELORIA_OF_TWO(name) \
  VELORIA_INLINE float name(float x, float y) { return name(Float(x), Float(y)).v[0]; }
VELORIA_OF_ONE(abs)
VELORIA_OF_ONE(floor)
VELORIA_OF_ONE(ceil)
VELORIA_OF_ONE(round)
VELORIA_OF_ONE(fract)
VELORIA_OF_ONE(sqrt)
VELORIA_OF_ONE(exp)
VELORIA_OF_ONE(sin)
VELORIA_OF_ONE(cos)
VELORIA_OF_TWO(min)
VELORIA_OF_TWO(max)
VELORIA_OF_TWO(pow)
VELORIA_INLINE float clamp(float x, float low, float high) { return min(max(x, low), high); }
VELORIA_INLINE float smoothstep(float low, float high, float x) { return smoothstep(Float(low), Float(high), Float(x)).v[0]; }
VELORIA_INLINE int min(int a, int b) { return a < b ? a : b; }
VELORIA_INLINE int max(int a, int b) { return a > b ? a : b; }
template <class T>
VELORIA_INLINE T pick(bool which, T a, T b) { return which ? a : b; }

}  // namespace veloria::gpu::cpu::VELORIA_SET
