#include "gpu/cpu/CpuDevice.h"

#include <algorithm>
#include <cctype>
#include <thread>
#include <utility>

#include "gpu/cpu/CpuPipeline.h"
#include "gpu/cpu/CpuSurface.h"

namespace veloria::gpu::cpu {

namespace {

constexpr unsigned mostThreads = 64;

const FunctionTable& tableOf(const CompiledLibrary& library, InstructionSet set) {
  switch (set) {
    case InstructionSet::sse42:
      return library.sse42;
    case InstructionSet::avx2:
      return library.avx2;
    case InstructionSet::avx512:
      return library.avx512;
    case InstructionSet::baseline:
      break;
  }
  return library.baseline;
}

/// The levels x86-64-v2, -v3 and -v4, by the features that no processor of a level lacks.
bool processorRuns(InstructionSet set) {
#if defined(__x86_64__)
  const bool v2 = __builtin_cpu_supports("sse4.2") != 0 && __builtin_cpu_supports("popcnt") != 0;
  const bool v3 = v2 && __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0 &&
                  __builtin_cpu_supports("bmi") != 0 && __builtin_cpu_supports("bmi2") != 0;
  const bool v4 = v3 && __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
                  __builtin_cpu_supports("avx512cd") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
                  __builtin_cpu_supports("avx512vl") != 0;
  if (set == InstructionSet::sse42) return v2;
  if (set == InstructionSet::avx2) return v3;
  if (set == InstructionSet::avx512) return v4;
#endif
  return set == InstructionSet::baseline;
}

/// As a person writes it: "baseline", "sse42", "avx2", "avx512".
std::string wishFor(InstructionSet set) {
  std::string wish;
  for (const char* c = instructionSetName(set); *c != '\0'; ++c) {
    if (std::isalnum(static_cast<unsigned char>(*c)) != 0)
      wish += static_cast<char>(std::tolower(static_cast<unsigned char>(*c)));
  }
  return wish;
}

unsigned threadsFor(unsigned wanted) {
  if (wanted == 0) return std::clamp(std::thread::hardware_concurrency(), 1U, 8U);
  return std::min(wanted, mostThreads);
}

}  // namespace

const char* instructionSetName(InstructionSet set) {
  switch (set) {
    case InstructionSet::baseline:
      return "baseline";
    case InstructionSet::sse42:
      return "SSE4.2";
    case InstructionSet::avx2:
      return "AVX2";
    case InstructionSet::avx512:
      return "AVX-512";
  }
  return "";
}

std::vector<InstructionSet> usableInstructionSets(const CompiledLibrary& library) {
  std::vector<InstructionSet> usable;
  for (const auto set :
       {InstructionSet::baseline, InstructionSet::sse42, InstructionSet::avx2, InstructionSet::avx512}) {
    if (tableOf(library, set).count > 0 && processorRuns(set)) usable.push_back(set);
  }
  return usable;
}

std::string knownWishes(const CompiledLibrary& library) {
  std::string known = "cpu";
  for (const auto set : usableInstructionSets(library)) known += ", cpu:" + wishFor(set);
  return known;
}

std::optional<CpuOptions> optionsFromWish(std::string_view wish, const CompiledLibrary& library) {
  std::string lower(wish);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
  if (lower == "cpu") return CpuOptions{};
  if (!lower.starts_with("cpu:")) return std::nullopt;
  for (const auto set : usableInstructionSets(library)) {
    if (lower == "cpu:" + wishFor(set)) return CpuOptions{.set = set, .threads = 0};
  }
  throw NoDeviceError("this processor has no \"" + std::string(wish) + "\"; it has " + knownWishes(library));
}

bool CpuLibrary::contains(const std::string& function) const {
  return function.starts_with("v_") || find(function) != nullptr;
}

const Function* CpuLibrary::find(std::string_view name) const {
  const auto* end = table_.functions + table_.count;
  const auto* found = std::find_if(table_.functions, end, [&](const Function& each) { return each.name == name; });
  return found != end ? found : nullptr;
}

CpuDevice::CpuDevice(const FunctionTable& functions, InstructionSet set, unsigned threads)
    : functions_(functions), set_(set), worker_(threads) {}

std::string CpuDevice::name() const {
  const unsigned threads = worker_.threads();
  return std::string("cpu, ") + instructionSetName(set_) + ", " + std::to_string(threads) +
         (threads == 1 ? " thread" : " threads");
}

std::unique_ptr<Library> CpuDevice::makeLibrary(std::span<const std::byte> bytes) {
  if (!bytes.empty()) throw DeviceError("this device's functions are compiled into the program");
  return std::make_unique<CpuLibrary>(functions_);
}

std::unique_ptr<FrameQueue> CpuDevice::makeFrameQueue() {
  return std::make_unique<CpuFrameQueue>(*this, worker_);
}

std::shared_ptr<Texture> CpuDevice::doMakeTexture(const TextureDescriptor& descriptor) {
  return std::make_shared<CpuTexture>(*this, descriptor);
}

std::unique_ptr<Pipeline> CpuDevice::doMakePipeline(const Library& library, const PipelineDescriptor& descriptor) {
  return std::make_unique<CpuPipeline>(descriptor, *static_cast<const CpuLibrary&>(library).find(descriptor.function));
}

std::unique_ptr<Device> makeCpuDevice(const CompiledLibrary& library, const CpuOptions& options) {
  const auto usable = usableInstructionSets(library);
  const InstructionSet set = options.set.value_or(usable.back());
  require(std::find(usable.begin(), usable.end(), set) != usable.end(),
          "makeCpuDevice: this processor does not run that instruction set");
  return std::make_unique<CpuDevice>(tableOf(library, set), set, threadsFor(options.threads));
}

bool isCpuDevice(const Device& device) {
  return dynamic_cast<const CpuDevice*>(&device) != nullptr;
}

std::unique_ptr<Surface> makeSurface(Device& device, std::unique_ptr<PictureBuffers> buffers) {
  return std::make_unique<CpuSurface>(static_cast<CpuDevice&>(device), std::move(buffers));
}

}  // namespace veloria::gpu::cpu
