#include <sys/resource.h>
#include <time.h>

#include <QCommandLineParser>
#include <algorithm>
#include <cstdio>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "base/MediaClock.h"
#include "main/GpuSetup.h"
#include "main/commands/Arguments.h"
#include "main/commands/Command.h"
#include "main/commands/VirtualDriver.h"
#include "render/FramePlan.h"
#include "render/NimbraRenderer.h"
#include "render/OffscreenTarget.h"

namespace veloria {

namespace {

constexpr long warmUpFrames = 60;
constexpr double frameTime = 1.0 / 60;

struct Samples {
  std::vector<double> values;

  void add(double value) {
    if (values.size() < values.capacity()) values.push_back(value);
  }
  double median() {
    if (values.empty()) return 0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
  }
};

struct Measurement {
  std::string device;
  gpu::Size drawable;
  GridSize grid;
  long frames = 0;
  double gpuMs = 0;
  double cpuMs = 0;
  double fps = 0;
  double rssMiB = 0;
  std::map<std::string, double> passes;
};

double threadCpuSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double peakMemoryMiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
#ifdef __APPLE__
  constexpr double unitsInMiB = 1024.0 * 1024.0;
#else
  constexpr double unitsInMiB = 1024.0;
#endif
  return static_cast<double>(usage.ru_maxrss) / unitsInMiB;
}

/// Everything that draws, with a clock that moves one 60 Hz frame at a time.
class Bench {
 public:
  Bench(gpu::Device& device, const gpu::Library& library, gpu::Size size, const NimbraConfig& config)
      : device_(device),
        driver_(config, {}),
        stats_([this] { return now_; }),
        renderer_(device, library, stats_, [this] { return now_; }),
        target_(device, size) {}

  NimbraRenderer& renderer() { return renderer_; }
  RenderStats& stats() { return stats_; }

  void frame() {
    now_ += frameTime;
    driver_.advanceTo(now_ - 1);
    renderer_.config = driver_.driven();
    renderer_.draw(target_);
  }

  void frames(long count) {
    for (long i = 0; i < count; ++i) frame();
  }

  void finish() { device_.waitIdle(); }

 private:
  gpu::Device& device_;
  double now_ = 1;
  VirtualDriver driver_;
  RenderStats stats_;
  NimbraRenderer renderer_;
  OffscreenTarget target_;
};

void measureFrames(Bench& bench, Measurement& result) {
  std::mutex lock;
  Samples gpu;
  Samples cpu;
  for (Samples* samples : {&gpu, &cpu}) samples->values.reserve(static_cast<std::size_t>(result.frames));
  bool counting = false;
  bench.renderer().setFrameObserver([&](const gpu::Completion& completion) {
    const std::lock_guard guard(lock);
    if (counting) gpu.add((completion.gpuEnd - completion.gpuStart) * 1000);
  });
  bench.frames(warmUpFrames);
  bench.finish();
  {
    const std::lock_guard guard(lock);
    counting = true;
  }
  const double start = mediaTime();
  for (long i = 0; i < result.frames; ++i) {
    const double cpuBefore = threadCpuSeconds();
    bench.frame();
    cpu.add((threadCpuSeconds() - cpuBefore) * 1000);
  }
  bench.finish();
  result.fps = static_cast<double>(result.frames) / (mediaTime() - start);
  bench.renderer().setFrameObserver(nullptr);
  result.gpuMs = gpu.median();
  result.cpuMs = cpu.median();
}

/// Times of single passes, from frames of their own: to measure them takes time itself.
void measurePasses(Bench& bench, Measurement& result) {
  std::mutex lock;
  std::map<std::string, std::vector<double>> samples;
  bench.renderer().setFrameObserver([&](const gpu::Completion& completion) {
    const std::lock_guard guard(lock);
    for (const gpu::PassTime& pass : completion.passes) samples[pass.name].push_back(pass.seconds * 1000);
  });
  bench.renderer().queue().setProfiling(true);
  bench.frames(std::min(result.frames, 60L));
  bench.finish();
  bench.renderer().queue().setProfiling(false);
  bench.renderer().setFrameObserver(nullptr);
  for (auto& [name, values] : samples) result.passes[name] = Samples{values}.median();
}

/// One of the devices that are compared.
struct Candidate {
  Gpu gpu;
  std::unique_ptr<Bench> bench;
  Samples milliseconds;  ///< a frame, one sample a turn
};

/// Draws with the devices in turns, so that whatever else the machine does meets all of them.
void compare(const QCommandLineParser& parser, gpu::Size size, long frames, const NimbraConfig& config) {
  constexpr long framesInTurn = 20;
  std::vector<Candidate> candidates;
  for (const QString& name : parser.values("compare")) {
    Candidate& candidate = candidates.emplace_back(Candidate{gpuFrom(parser, name.toStdString()), nullptr, {}});
    candidate.bench = std::make_unique<Bench>(*candidate.gpu.device, *candidate.gpu.library, size, config);
    candidate.bench->frames(warmUpFrames);
    candidate.bench->finish();
  }
  const long turns = std::max(frames / framesInTurn, 3L);
  for (long turn = 0; turn < turns; ++turn) {
    for (Candidate& candidate : candidates) {
      const double start = mediaTime();
      candidate.bench->frames(framesInTurn);
      candidate.bench->finish();
      candidate.milliseconds.values.push_back((mediaTime() - start) * 1000 / framesInTurn);
    }
  }
  const double first = candidates.front().milliseconds.median();
  for (Candidate& candidate : candidates) {
    const double median = candidate.milliseconds.median();
    std::printf("%8.3f ms per frame  %5.2f  %s\n", median, median / first, candidate.gpu.device->name().c_str());
  }
}

void printJson(const Measurement& result) {
  nlohmann::ordered_json json;
  json["device"] = result.device;
  json["drawable"] = {result.drawable.width, result.drawable.height};
  json["grid"] = {result.grid.width, result.grid.height};
  json["frames"] = result.frames;
  json["gpuMs"] = result.gpuMs;
  json["cpuMs"] = result.cpuMs;
  json["fps"] = result.fps;
  json["rssMiB"] = result.rssMiB;
  json["passes"] = nlohmann::ordered_json::object();
  for (const auto& [name, ms] : result.passes) json["passes"][name] = ms;
  std::printf("%s\n", json.dump(2).c_str());
}

void printTable(const Measurement& result) {
  std::printf("device       %s\n", result.device.c_str());
  std::printf("drawable     %ux%u, grid %lldx%lld, %ld frames\n", result.drawable.width, result.drawable.height,
              static_cast<long long>(result.grid.width), static_cast<long long>(result.grid.height), result.frames);
  std::printf("drawing      %.3f ms per frame, on the device\n", result.gpuMs);
  std::printf("submitting   %.3f ms per frame, on our side\n", result.cpuMs);
  std::printf("rate         %.1f frames per second, unpaced\n", result.fps);
  std::printf("memory       %.1f MiB at most\n", result.rssMiB);
  for (const auto& [name, ms] : result.passes) std::printf("  %-20s %.3f ms\n", name.c_str(), ms);
}

}  // namespace

int runBench(const QStringList& arguments) {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      "Measures drawing without a display, unpaced, after warm-up: medians, and frames per second.");
  parser.addOptions({
      {"size", "Size of the picture in pixels (default 1920x32).", "WxH"},
      {"frames", "Frames to measure, 10 to 100000 (default 300).", "count"},
      {"compare", "Measure this device against others: repeat it for each. Prints times and ratios to the first.",
       "name"},
      {"json", "Print JSON."},
  });
  addConfigOptions(parser);
  addGpuOptions(parser);
  if (!parseArguments(parser, "veloria bench", arguments, 0)) return done;

  Measurement result;
  result.drawable =
      parser.isSet("size") ? parsePixelSize("--size", parser.value("size").toStdString()) : gpu::Size{1920, 32};
  result.frames =
      parser.isSet("frames") ? parseCount("--frames", parser.value("frames").toStdString(), 10, 100000) : 300;
  const NimbraConfig config = configFrom(parser);
  if (parser.isSet("compare")) {
    compare(parser, result.drawable, result.frames, config);
    return done;
  }
  const Gpu gpu = gpuFrom(parser);
  result.device = gpu.device->name();
  Bench bench(*gpu.device, *gpu.library, result.drawable, config);
  measureFrames(bench, result);
  measurePasses(bench, result);
  const RenderStats::Figures figures = bench.stats().figures();
  result.grid = {figures.gridW, figures.gridH};
  result.rssMiB = peakMemoryMiB();
  if (parser.isSet("json")) {
    printJson(result);
  } else {
    printTable(result);
  }
  return done;
}

}  // namespace veloria
