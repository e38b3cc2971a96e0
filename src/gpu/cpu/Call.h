#pragma once

#include <cstdint>

// What the compiled functions and the rest of this back end share. Plain data: it is compiled for several instruction
// sets.
namespace veloria::gpu::cpu {

/// A texture's memory. Floats in planes, one a channel; a channel that the format lacks points to the first one. Up to
/// `slack` floats beyond a row's end may be read, and a row's last vector may be written as a whole; its lanes beyond the
/// end may read up to `widestLanes` floats before a row's begin.
/// A picture of 8 bits a channel has `pixels` instead.
struct Planes {
  int width = 0;
  int height = 0;
  int stride = 0;  ///< floats from a row to the next
  int channels = 0;
  float* channel[4] = {};
  std::uint8_t* pixels = nullptr;  ///< 4 bytes a pixel
  int rowBytes = 0;
  bool blueFirst = false;
};

inline constexpr int widestLanes = 16;
inline constexpr int slack = 2 * widestLanes;

/// One pass.
struct Call {
  Planes textures[4];
  Planes images[3];
  Planes target;
  const void* bytes = nullptr;  ///< the uniform block
  std::uint32_t targetKind = 0;
  std::uint32_t variant = 0;
};

/// Runs a function for the rows from `first` to before `end` of a call's target. Any thread.
using RowsFunction = void (*)(const Call& call, int first, int end);

struct Function {
  const char* name = "";
  RowsFunction rows = nullptr;
  /// How many rows above and below its own a compute function reads of its images; -1 if it may read any.
  int reach = -1;
  bool draws = false;  ///< a fragment function
};

/// The functions of a library for one instruction set.
struct FunctionTable {
  const Function* functions = nullptr;
  int count = 0;
};

/// A shader library, compiled into the program: the same functions for every instruction set that this processor family
/// has; a table without functions for those that it lacks.
struct CompiledLibrary {
  FunctionTable baseline;  ///< four lanes, on every processor
  FunctionTable sse42;     ///< the same where it has SSE4.2
  FunctionTable avx2;      ///< eight lanes; with FMA
  FunctionTable avx512;    ///< sixteen lanes
};

}  // namespace veloria::gpu::cpu
