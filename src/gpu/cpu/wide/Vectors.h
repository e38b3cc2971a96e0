#pragma once

#include "wide/Numbers.h"

// GLSL's vectors of wide numbers, as far as the functions use them. A swizzle is a call: v.xy().
namespace veloria::gpu::cpu::VELORIA_SET {

struct vec2;

struct ivec2 {
  Int x, y;
  ivec2() = default;
  VELORIA_INLINE ivec2(Int a, Int b) : x(a), y(b) {}
  VELORIA_INLINE explicit ivec2(Int both) : x(both), y(both) {}
  VELORIA_INLINE explicit ivec2(vec2 f);
  template <class Unsigned>
    requires requires(Unsigned u) { u.x.v; toInt(u.x); }
  VELORIA_INLINE explicit ivec2(Unsigned u) : x(toInt(u.x)), y(toInt(u.y)) {}
  friend VELORIA_INLINE ivec2 operator+(ivec2 a, ivec2 b) { return {a.x + b.x, a.y + b.y}; }
  friend VELORIA_INLINE ivec2 operator-(ivec2 a, ivec2 b) { return {a.x - b.x, a.y - b.y}; }
  friend VELORIA_INLINE ivec2 operator-(ivec2 a, int b) { return {a.x - b, a.y - b}; }
};
VELORIA_INLINE ivec2 clamp(ivec2 c, ivec2 low, ivec2 high) {
  return {min(max(c.x, low.x), high.x), min(max(c.y, low.y), high.y)};
}

struct uvec2 {
  Uint x, y;
  uvec2() = default;
  VELORIA_INLINE uvec2(Uint a, Uint b) : x(a), y(b) {}
  VELORIA_INLINE explicit uvec2(vec2 f);
  VELORIA_INLINE uvec2 yx() const { return {y, x}; }
  friend VELORIA_INLINE uvec2 operator*(uvec2 a, Uint b) { return {a.x * b, a.y * b}; }
  friend VELORIA_INLINE uvec2 operator+(uvec2 a, Uint b) { return {a.x + b, a.y + b}; }
};

#define VELORIA_EACH2(op) x op o.x, y op o.y
#define VELORIA_EACH3(op) VELORIA_EACH2(op), z op o.z
#define VELORIA_EACH4(op) VELORIA_EACH3(op), w op o.w
#define VELORIA_VECTOR_OPERATOR(Type, each, op)                                  \
  VELORIA_INLINE Type operator op(Type o) const { return Type{each(op)}; }       \
  VELORIA_INLINE Type operator op(Float s) const { return *this op Type(s); }    \
  friend VELORIA_INLINE Type operator op(Float s, Type o) { return Type(s) op o; } \
  VELORIA_INLINE Type& operator op##=(Type o) { return *this = *this op o; }     \
  VELORIA_INLINE Type& operator op##=(Float s) { return *this = *this op Type(s); }
#define VELORIA_VECTOR_OPERATORS(Type, each)                                        \
  VELORIA_VECTOR_OPERATOR(Type, each, +) VELORIA_VECTOR_OPERATOR(Type, each, -)     \
  VELORIA_VECTOR_OPERATOR(Type, each, *) VELORIA_VECTOR_OPERATOR(Type, each, /)

struct vec2 {
  Float x, y;
  vec2() = default;
  VELORIA_INLINE vec2(Float a, Float b) : x(a), y(b) {}
  VELORIA_INLINE explicit vec2(Float all) : x(all), y(all) {}
  VELORIA_INLINE explicit vec2(ivec2 i) : x(toFloat(i.x)), y(toFloat(i.y)) {}
  VELORIA_INLINE vec2 xy() const { return *this; }
  VELORIA_INLINE vec2 yx() const { return {y, x}; }
  VELORIA_VECTOR_OPERATORS(vec2, VELORIA_EACH2)
};

struct vec3 {
  Float x, y, z;
  vec3() = default;
  VELORIA_INLINE vec3(Float a, Float b, Float c) : x(a), y(b), z(c) {}
  VELORIA_INLINE explicit vec3(Float all) : x(all), y(all), z(all) {}
  VELORIA_VECTOR_OPERATORS(vec3, VELORIA_EACH3)
};

struct vec4 {
  Float x, y, z, w;
  vec4() = default;
  VELORIA_INLINE vec4(Float a, Float b, Float c, Float d) : x(a), y(b), z(c), w(d) {}
  VELORIA_INLINE explicit vec4(Float all) : x(all), y(all), z(all), w(all) {}
  VELORIA_INLINE vec4(vec3 a, Float d) : x(a.x), y(a.y), z(a.z), w(d) {}
  VELORIA_INLINE vec4(vec2 a, Float c, Float d) : x(a.x), y(a.y), z(c), w(d) {}
  VELORIA_INLINE vec2 xy() const { return {x, y}; }
  VELORIA_INLINE vec2 xz() const { return {x, z}; }
  VELORIA_INLINE vec2 yw() const { return {y, w}; }
  VELORIA_INLINE vec3 rgb() const { return {x, y, z}; }
  VELORIA_VECTOR_OPERATORS(vec4, VELORIA_EACH4)
};

VELORIA_INLINE ivec2::ivec2(vec2 f) : x(toInt(f.x)), y(toInt(f.y)) {}
VELORIA_INLINE uvec2::uvec2(vec2 f) : x(toUint(f.x)), y(toUint(f.y)) {}

#define VELORIA_PER_CHANNEL(name)                                                              \
  VELORIA_INLINE vec2 name(vec2 a) { return {name(a.x), name(a.y)}; }                          \
  VELORIA_INLINE vec3 name(vec3 a) { return {name(a.x), name(a.y), name(a.z)}; }               \
  VELORIA_INLINE vec4 name(vec4 a) { return {name(a.x), name(a.y), name(a.z), name(a.w)}; }
#define VELORIA_PER_CHANNEL_OF_TWO(name)                                                                           \
  VELORIA_INLINE vec2 name(vec2 a, vec2 b) { return {name(a.x, b.x), name(a.y, b.y)}; }                            \
  VELORIA_INLINE vec3 name(vec3 a, vec3 b) { return {name(a.x, b.x), name(a.y, b.y), name(a.z, b.z)}; }            \
  VELORIA_INLINE vec4 name(vec4 a, vec4 b) {                                                                       \
    return {name(a.x, b.x), name(a.y, b.y), name(a.z, b.z), name(a.w, b.w)};                                       \
  }                                                                                                                \
  VELORIA_INLINE vec2 name(vec2 a, Float b) { return name(a, vec2(b)); }                                           \
  VELORIA_INLINE vec3 name(vec3 a, Float b) { return name(a, vec3(b)); }                                           \
  VELORIA_INLINE vec4 name(vec4 a, Float b) { return name(a, vec4(b)); }
VELORIA_PER_CHANNEL(floor)
VELORIA_PER_CHANNEL(fract)
VELORIA_PER_CHANNEL(abs)
VELORIA_PER_CHANNEL_OF_TWO(min)
VELORIA_PER_CHANNEL_OF_TWO(max)
VELORIA_PER_CHANNEL_OF_TWO(pow)

VELORIA_INLINE vec3 cubeRoot(vec3 a) { return {cubeRoot(a.x), cubeRoot(a.y), cubeRoot(a.z)}; }
VELORIA_INLINE vec3 step(Float edge, vec3 x) { return {step(edge, x.x), step(edge, x.y), step(edge, x.z)}; }
VELORIA_INLINE vec2 mix(vec2 a, vec2 b, Float t) { return a + (b - a) * t; }
VELORIA_INLINE vec3 mix(vec3 a, vec3 b, Float t) { return a + (b - a) * t; }
VELORIA_INLINE vec4 mix(vec4 a, vec4 b, Float t) { return a + (b - a) * t; }
VELORIA_INLINE vec3 mix(vec3 a, vec3 b, vec3 t) { return a + (b - a) * t; }
VELORIA_INLINE vec3 clamp(vec3 x, Float low, Float high) { return min(max(x, low), high); }
VELORIA_INLINE vec4 clamp(vec4 x, vec4 low, vec4 high) { return min(max(x, low), high); }
VELORIA_INLINE Float dot(vec2 a, vec2 b) { return a.x * b.x + a.y * b.y; }
VELORIA_INLINE Float dot(vec3 a, vec3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
VELORIA_INLINE Float length(vec2 a) { return sqrt(dot(a, a)); }

struct bvec3 {
  Mask x, y, z;
};
struct bvec4 {
  Mask x, y, z, w;
};
VELORIA_INLINE bvec3 lessThanEqual(vec3 a, vec3 b) { return {a.x <= b.x, a.y <= b.y, a.z <= b.z}; }
VELORIA_INLINE bvec4 lessThanEqual(vec4 a, vec4 b) { return {a.x <= b.x, a.y <= b.y, a.z <= b.z, a.w <= b.w}; }
VELORIA_INLINE Mask all(bvec3 b) { return b.x && b.y && b.z; }
VELORIA_INLINE Mask all(bvec4 b) { return b.x && b.y && b.z && b.w; }

VELORIA_INLINE vec2 pick(Mask which, vec2 a, vec2 b) { return {pick(which, a.x, b.x), pick(which, a.y, b.y)}; }
VELORIA_INLINE vec3 pick(Mask which, vec3 a, vec3 b) {
  return {pick(which, a.x, b.x), pick(which, a.y, b.y), pick(which, a.z, b.z)};
}
VELORIA_INLINE vec4 pick(Mask which, vec4 a, vec4 b) {
  return {pick(which, a.x, b.x), pick(which, a.y, b.y), pick(which, a.z, b.z), pick(which, a.w, b.w)};
}

/// A constant matrix, column by column.
struct mat3 {
  float m[9];
  VELORIA_INLINE constexpr mat3(float a, float b, float c, float d, float e, float f, float g, float h, float i)
      : m{a, b, c, d, e, f, g, h, i} {}
  friend VELORIA_INLINE vec3 operator*(const mat3& k, vec3 v) {
    return {k.m[0] * v.x + k.m[3] * v.y + k.m[6] * v.z, k.m[1] * v.x + k.m[4] * v.y + k.m[7] * v.z,
            k.m[2] * v.x + k.m[5] * v.y + k.m[8] * v.z};
  }
};

}  // namespace veloria::gpu::cpu::VELORIA_SET
