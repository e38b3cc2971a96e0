#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gpu/Device.h"
#include "gpu/PictureBuffers.h"
#include "gpu/Surface.h"
#include "gpu/cpu/Call.h"

/// The CPU back end's public part. It needs no driver and no library file: its functions are compiled into the program
/// from the same sources as everybody's (wide/, spell).
namespace veloria::gpu::cpu {

/// What the functions are compiled for, slowest first.
enum class InstructionSet : std::uint8_t { baseline, sse42, avx2, avx512 };

/// "baseline", "SSE4.2", "AVX2", "AVX-512".
const char* instructionSetName(InstructionSet set);

/// Those that `library` has and this processor runs, slowest first; never empty.
std::vector<InstructionSet> usableInstructionSets(const CompiledLibrary& library);

/// What optionsFromWish() takes, for a person: "cpu, cpu:baseline, cpu:avx2".
std::string knownWishes(const CompiledLibrary& library);

struct CpuOptions {
  std::optional<InstructionSet> set;  ///< the fastest if none; one of usableInstructionSets()
  unsigned threads = 0;               ///< 1 to 64; 0: one for each core, at most 8
};

/// What a person can write to ask for this back end: "cpu", or "cpu:" and the letters and digits of an instruction
/// set's name, in any case ("cpu:avx512"). Nothing if `wish` is something else. Throws NoDeviceError, which names the
/// usable ones, if it begins with "cpu:" and is none of them.
std::optional<CpuOptions> optionsFromWish(std::string_view wish, const CompiledLibrary& library);

/// `library` must outlive the device. Same input, same output: for any number of threads, and with `baseline` also on
/// any processor. Texels of floating-point formats keep 32 bits until they are read back. makeLibrary() takes no bytes.
std::unique_ptr<Device> makeCpuDevice(const CompiledLibrary& library, const CpuOptions& options);

bool isCpuDevice(const Device& device);

/// A surface that `device` (one of makeCpuDevice(), which must outlive it) draws into the pictures of `buffers`.
/// Its format is always bgra8Unorm. Its destructor waits for pictures in flight.
std::unique_ptr<Surface> makeSurface(Device& device, std::unique_ptr<PictureBuffers> buffers);

}  // namespace veloria::gpu::cpu
