// The cost of the scene: one driver tick in each drive mode with a state file and an alert, and parsing.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "scene/BuiltInScripts.h"
#include "scene/SceneDriver.h"

namespace {

using namespace veloria;

void tick(benchmark::State& state) {
  NimbraConfig settings;
  settings.visualizer = static_cast<Visualizer>(state.range(0));
  settings.customScript = "bind glow = smoothstep(0, 1, sin(t * 0.5) * 0.5 + 0.5)\nbind hue = t * 0.01";
  settings.tempo = 1.5;
  double now = 0;
  const std::filesystem::path file = std::filesystem::temp_directory_path() / ("bench-" + std::to_string(::getpid()));
  std::ofstream(file) << R"({"busy": 1, "ok": 0, "err": 0.5, "a0": 0.1, "alert_until": 1e12,
                             "sessions": {"one": {"busy": 1, "expires": 1e12}}})";
  SceneDriver driver({.settings = [&]() -> const NimbraConfig& { return settings; },
                      .mediaClock = [&] { return now; },
                      .agentStateFile = file});
  driver.recompile();
  for (const auto name : DriveChannels::sourceNames) driver.channels.set(name, 0.5, 0.3);
  for (auto _ : state) {
    now += SceneDriver::tickSeconds;
    driver.tick();
  }
  state.SetLabel(std::string(rawValue(settings.visualizer)));
  std::filesystem::remove(file);
}
BENCHMARK(tick)->DenseRange(0, 5);

void largestExpression(benchmark::State& state) {
  std::string text = "bind glow = bass";
  for (std::size_t i = 1; i < Expr::maxNodes / 2; ++i) text += "+1";
  const NimbraScript script = NimbraScript::parse(text);
  const ChannelValues channels{{"bass", 0.5}};
  for (auto _ : state) benchmark::DoNotOptimize(script.bindings.front().second.eval(channels));
}
BENCHMARK(largestExpression);

void parse(benchmark::State& state) {
  const std::string_view text = builtInScript(Visualizer::music);
  for (auto _ : state) benchmark::DoNotOptimize(NimbraScript::parse(text));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(parse);

}  // namespace

BENCHMARK_MAIN();
