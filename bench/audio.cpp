// The cost of listening: the analysis of one block, and the thread that records while a tone plays.

#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "desktop/SoundServer.h"
#include "platform/linux/pulse/PulseAudioTap.h"
#include "sources/AudioAnalysis.h"
#include "sources/AudioSource.h"

namespace {

using namespace veloria;

constexpr double blocksASecond = 48000.0 / AudioAnalysis::blockSize;
constexpr double recordingSeconds = 10;

std::vector<float> sine() {
  std::vector<float> samples(AudioAnalysis::blockSize);
  for (std::size_t n = 0; n < samples.size(); ++n) samples[n] = std::sin(static_cast<float>(n) * 0.05F);
  return samples;
}

void analyzeStereoBlock(benchmark::State& state) {
  const std::vector<float> samples = sine();
  const std::array<std::span<const float>, 2> channels{samples, samples};
  AudioAnalysis analysis;
  for (auto _ : state) benchmark::DoNotOptimize(analysis.add(channels));
  // CPU time of one block times the blocks of a second.
  state.counters["% of a core at 47 a second"] = benchmark::Counter(
      1 / (blocksASecond * 100), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(analyzeStereoBlock);

/// Seconds that this process' thread of that name has run; 0 when there is none.
double threadSeconds(const std::string& name) {
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::string line;
    std::getline(std::ifstream(task.path() / "comm"), line);
    double nanoseconds = 0;
    if (line == name && std::ifstream(task.path() / "schedstat") >> nanoseconds) return nanoseconds * 1e-9;
  }
  return 0;
}

void recordTone(benchmark::State& state) {
  if (const auto missing = tests::SoundServer::missing(); !missing.empty()) {
    state.SkipWithError(missing.c_str());
    return;
  }
  tests::SoundServer server;
  server.enter();
  const auto tone = server.playSine(100);
  AudioSource source(std::make_unique<PulseAudioTap>());
  source.start();
  if (!tests::poll(20, [&] { return source.bands().bass > 0.5; })) {
    state.SkipWithError("nothing is heard");
    return;
  }
  for (auto _ : state) {
    const double before = threadSeconds("veloria-audio");
    const int blocks = source.diagnostics().audioCallbackCount;
    std::this_thread::sleep_for(std::chrono::duration<double>(recordingSeconds));
    const double share = (threadSeconds("veloria-audio") - before) / recordingSeconds;
    state.counters["% of a core"] = share * 100;
    state.counters["deliveries a second"] = (source.diagnostics().audioCallbackCount - blocks) / recordingSeconds;
  }
}
BENCHMARK(recordTone)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace

BENCHMARK_MAIN();
