#pragma once

#if defined(__SSE4_2__)
#include <immintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

// Vectors of a fixed number of lanes, and the few operations that need to know the instruction set. This folder is
// compiled once for each set; VELORIA_LANES is 4, 8 or 16, and VELORIA_SET names the namespace, so that no function of
// one set is ever linked into another. For the same reason nothing of the standard library is used here, and everything
// is inlined.
namespace veloria::gpu::cpu::VELORIA_SET {

#define VELORIA_INLINE inline __attribute__((always_inline))

constexpr int lanes = VELORIA_LANES;
typedef float FloatLanes __attribute__((vector_size(4 * VELORIA_LANES)));
typedef int IntLanes __attribute__((vector_size(4 * VELORIA_LANES)));
typedef unsigned UintLanes __attribute__((vector_size(4 * VELORIA_LANES)));

VELORIA_INLINE FloatLanes splat(float value) {
  return value - FloatLanes{};
}
VELORIA_INLINE IntLanes splat(int value) {
  return value - IntLanes{};
}
VELORIA_INLINE UintLanes splat(unsigned value) {
  return value - UintLanes{};
}

/// 0, 1, 2 and so on.
VELORIA_INLINE IntLanes laneNumbers() {
#if VELORIA_LANES == 4
  return IntLanes{0, 1, 2, 3};
#elif VELORIA_LANES == 8
  return IntLanes{0, 1, 2, 3, 4, 5, 6, 7};
#else
  return IntLanes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
#endif
}

VELORIA_INLINE FloatLanes load(const float* from) {
  FloatLanes value;
  __builtin_memcpy(&value, from, sizeof value);
  return value;
}
VELORIA_INLINE void store(float* to, FloatLanes value) {
  __builtin_memcpy(to, &value, sizeof value);
}

VELORIA_INLINE FloatLanes toFloats(IntLanes value) {
  return __builtin_convertvector(value, FloatLanes);
}
/// Towards zero. The values must be in the range of int.
VELORIA_INLINE IntLanes toInts(FloatLanes value) {
  return __builtin_convertvector(value, IntLanes);
}

// Below: any() of a mask's lanes; gather() of single floats; permute() of one vector's lanes, or of two vectors' as if
// they were one; least() and greatest(), which give the second operand if the first is not a number.
#if VELORIA_LANES == 16

VELORIA_INLINE bool any(IntLanes mask) {
  return _mm512_test_epi32_mask((__m512i)mask, (__m512i)mask) != 0;
}
VELORIA_INLINE FloatLanes gather(const float* from, IntLanes at) {
  return (FloatLanes)_mm512_i32gather_ps((__m512i)at, from, 4);
}
VELORIA_INLINE FloatLanes permute(FloatLanes a, IntLanes at) {
  return (FloatLanes)_mm512_permutexvar_ps((__m512i)at, (__m512)a);
}
VELORIA_INLINE FloatLanes permute(FloatLanes a, FloatLanes b, IntLanes at) {
  return (FloatLanes)_mm512_permutex2var_ps((__m512)a, (__m512i)at, (__m512)b);
}
VELORIA_INLINE FloatLanes squareRoot(FloatLanes a) {
  return (FloatLanes)_mm512_sqrt_ps((__m512)a);
}
VELORIA_INLINE FloatLanes roundDown(FloatLanes a) {
  return (FloatLanes)_mm512_roundscale_ps((__m512)a, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC);
}
VELORIA_INLINE FloatLanes roundNearest(FloatLanes a) {
  return (FloatLanes)_mm512_roundscale_ps((__m512)a, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
}
VELORIA_INLINE FloatLanes least(FloatLanes a, FloatLanes b) {
  return (FloatLanes)_mm512_min_ps((__m512)a, (__m512)b);
}
VELORIA_INLINE FloatLanes greatest(FloatLanes a, FloatLanes b) {
  return (FloatLanes)_mm512_max_ps((__m512)a, (__m512)b);
}

#elif VELORIA_LANES == 8

VELORIA_INLINE bool any(IntLanes mask) {
  return _mm256_testz_si256((__m256i)mask, (__m256i)mask) == 0;
}
VELORIA_INLINE FloatLanes gather(const float* from, IntLanes at) {
  return (FloatLanes)_mm256_i32gather_ps(from, (__m256i)at, 4);
}
VELORIA_INLINE FloatLanes permute(FloatLanes a, IntLanes at) {
  return (FloatLanes)_mm256_permutevar8x32_ps((__m256)a, (__m256i)at);
}
VELORIA_INLINE FloatLanes permute(FloatLanes a, FloatLanes b, IntLanes at) {
  return at < 8 ? permute(a, at) : permute(b, at);
}
VELORIA_INLINE FloatLanes squareRoot(FloatLanes a) {
  return (FloatLanes)_mm256_sqrt_ps((__m256)a);
}
VELORIA_INLINE FloatLanes roundDown(FloatLanes a) {
  return (FloatLanes)_mm256_floor_ps((__m256)a);
}
VELORIA_INLINE FloatLanes roundNearest(FloatLanes a) {
  return (FloatLanes)_mm256_round_ps((__m256)a, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
}
VELORIA_INLINE FloatLanes least(FloatLanes a, FloatLanes b) {
  return (FloatLanes)_mm256_min_ps((__m256)a, (__m256)b);
}
VELORIA_INLINE FloatLanes greatest(FloatLanes a, FloatLanes b) {
  return (FloatLanes)_mm256_max_ps((__m256)a, (__m256)b);
}

#else

VELORIA_INLINE FloatLanes gather(const float* from, IntLanes at) {
  return FloatLanes{from[at[0]], from[at[1]], from[at[2]], from[at[3]]};
}
#if defined(__SSE4_2__)

VELORIA_INLINE bool any(IntLanes mask) {
  return _mm_testz_si128((__m128i)mask, (__m128i)mask) == 0;
}
VELORIA_INLINE FloatLanes permute(FloatLanes a, IntLanes at) {
  return (FloatLanes)_mm_shuffle_epi8((__m128i)a, (__m128i)((at & 3) * 0x04040404 + 0x03020100));
}
VELORIA_INLINE FloatLanes squareRoot(FloatLanes a) {
  return (FloatLanes)_mm_sqrt_ps((__m128)a);
}
VELORIA_INLINE FloatLanes roundDown(FloatLanes a) {
  return (FloatLanes)_mm_floor_ps((__m128)a);
}
VELORIA_INLINE FloatLanes roundNearest(FloatLanes a) {
  return (FloatLanes)_mm_round_ps((__m128)a, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
}
VELORIA_INLINE FloatLanes least(FloatLanes a, FloatLanes b) {
  return (FloatLanes)_mm_min_ps((__m128)a, (__m128)b);
}
VELORIA_INLINE FloatLanes greatest(FloatLanes a, FloatLanes b) {
  return (FloatLanes)_mm_max_ps((__m128)a, (__m128)b);
}

#else

VELORIA_INLINE FloatLanes least(FloatLanes a, FloatLanes b) {
  return a < b ? a : b;
}
VELORIA_INLINE FloatLanes greatest(FloatLanes a, FloatLanes b) {
  return a > b ? a : b;
}
#if defined(__aarch64__)

VELORIA_INLINE bool any(IntLanes mask) {
  return vmaxvq_u32((uint32x4_t)mask) != 0;
}
VELORIA_INLINE FloatLanes permute(FloatLanes a, IntLanes at) {
  return (FloatLanes)vqtbl1q_u8((uint8x16_t)a, (uint8x16_t)((at & 3) * 0x04040404 + 0x03020100));
}
VELORIA_INLINE FloatLanes squareRoot(FloatLanes a) {
  return (FloatLanes)vsqrtq_f32((float32x4_t)a);
}
VELORIA_INLINE FloatLanes roundDown(FloatLanes a) {
  return (FloatLanes)vrndmq_f32((float32x4_t)a);
}
VELORIA_INLINE FloatLanes roundNearest(FloatLanes a) {
  return (FloatLanes)vrndnq_f32((float32x4_t)a);
}

#else  // every processor

VELORIA_INLINE bool any(IntLanes mask) {
  return (mask[0] | mask[1] | mask[2] | mask[3]) != 0;
}
VELORIA_INLINE FloatLanes permute(FloatLanes a, IntLanes at) {
  return FloatLanes{a[at[0] & 3], a[at[1] & 3], a[at[2] & 3], a[at[3] & 3]};
}
VELORIA_INLINE FloatLanes squareRoot(FloatLanes a) {
  return FloatLanes{__builtin_sqrtf(a[0]), __builtin_sqrtf(a[1]), __builtin_sqrtf(a[2]), __builtin_sqrtf(a[3])};
}
/// Of numbers from -2^30 to 2^30; beyond 2^23 all floats are whole, so nothing is lost by holding them there.
VELORIA_INLINE FloatLanes truncated(FloatLanes a) {
  const FloatLanes whole = toFloats(toInts(least(greatest(a, splat(-1073741824.0F)), splat(1073741824.0F))));
  const FloatLanes size = (FloatLanes)((IntLanes)a & 0x7FFFFFFF);
  return size < 8388608.0F ? whole : a;
}
VELORIA_INLINE FloatLanes roundDown(FloatLanes a) {
  const FloatLanes whole = truncated(a);
  return whole > a ? whole - 1.0F : whole;
}
VELORIA_INLINE FloatLanes roundNearest(FloatLanes a) {
  // Adding and taking away 2^23 rounds to nearest even, as the other sets do.
  const FloatLanes big = (FloatLanes)(((IntLanes)a & (int)0x80000000U) | (IntLanes)splat(8388608.0F));
  const FloatLanes size = (FloatLanes)((IntLanes)a & 0x7FFFFFFF);
  return size < 8388608.0F ? (a + big) - big : a;
}

#endif
#endif

VELORIA_INLINE FloatLanes permute(FloatLanes a, FloatLanes b, IntLanes at) {
  return at < 4 ? permute(a, at) : permute(b, at);
}

#endif

/// Towards zero, of any float: what is too large gives the nearest of -2^30 and 2^30, and so does what is not a number.
VELORIA_INLINE IntLanes toBoundedInts(FloatLanes a) {
  return toInts(least(greatest(a, splat(-1073741824.0F)), splat(1073741824.0F)));
}

}  // namespace veloria::gpu::cpu::VELORIA_SET
