// The cost of a frame: a driver tick when it is due, encoding and submitting, waiting for the GPU; and the number of our
// allocations.

#include <benchmark/benchmark.h>

#include "AllocationCount.h"
#include "app/ShaderLibrary.h"
#include "main/GpuSetup.h"
#include "main/commands/VirtualDriver.h"
#include "render/NimbraRenderer.h"
#include "render/OffscreenTarget.h"

namespace {

using namespace veloria;

void frame(benchmark::State& state) {
  constexpr double frameTime = 1.0 / 60;
  const auto device = makeDevice({});
  const auto library = loadShaderLibrary(*device, {VELORIA_SHADER_LIBRARY});
  double now = 1;
  VirtualDriver driver(NimbraConfig(), {});
  RenderStats stats([&] { return now; });
  NimbraRenderer renderer(*device, *library, stats, [&] { return now; });
  OffscreenTarget target(*device,
                         {static_cast<std::uint32_t>(state.range(0)), static_cast<std::uint32_t>(state.range(1))});
  const auto draw = [&] {
    now += frameTime;
    driver.advanceTo(now - 1);
    renderer.config = driver.driven();
    renderer.draw(target);
  };
  for (int i = 0; i < 60; ++i) draw();
  device->waitIdle();
  const std::uint64_t before = allocationsOnThisThread();
  for (auto _ : state) draw();
  const auto allocations = static_cast<double>(allocationsOnThisThread() - before);
  device->waitIdle();
  state.counters["allocations"] = benchmark::Counter(allocations, benchmark::Counter::kAvgIterations);
}
BENCHMARK(frame)->Args({1920, 32})->Args({3456, 74})->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
