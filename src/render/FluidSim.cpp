#include "render/FluidSim.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

#include "base/Log.h"
#include "render/FramePlan.h"
#include "render/MotionPhases.h"
#include "render/RendererError.h"

namespace veloria {

namespace {

std::shared_ptr<gpu::Pipeline> kernel(gpu::Device& device, const gpu::Library& library, const char* name) {
  if (!library.contains(name)) throw RendererError::missingFunction(name);
  return device.makePipeline(library, {.function = name});
}

/// Lattice steps a second of scaled time.
double curlSteps(double speed) {
  return std::min(std::abs(speed) * 8, 64.0);
}

double emitSteps(double speed) {
  return std::min(std::abs(speed) * 6, 64.0);
}

/// What the birth of light is multiplied by, `age` seconds after a clearing, for a frame that moves the fluid on by
/// `dt` 60 Hz frames, `seconds` after the one before. Over the first second it adds what 0.9 s of scaled time at the
/// full rate would give, most of it at once, whatever the time scale; a slow frame adds no more than all of it.
float firstLight(double age, double seconds, double dt) {
  if (age >= 1 || !(dt > 0)) return 1;
  const double left = 1 - age;
  return static_cast<float>(1 + 3.6 * left * left * left * std::min(seconds, 0.25) * 60 / dt);
}

std::uint32_t cells(std::int64_t count) {
  return static_cast<std::uint32_t>(count);
}

}  // namespace

FluidSim::FluidSim(gpu::Device& device, const gpu::Library& library)
    : device_(device),
      advectVelocity_(kernel(device, library, "k_advect_velocity")),
      curlPipeline_(kernel(device, library, "k_curl")),
      forces_(kernel(device, library, "k_forces")),
      divergencePipeline_(kernel(device, library, "k_divergence")),
      jacobi_(kernel(device, library, "k_jacobi")),
      project_(kernel(device, library, "k_project")),
      advectDye_(kernel(device, library, "k_advect_dye")),
      clear_(kernel(device, library, "k_clear")) {}

std::shared_ptr<gpu::Texture> FluidSim::makeField(gpu::PixelFormat format, const char* label,
                                                  gpu::StorageMode storage) {
  return device_.makeTexture({.format = format,
                              .size = {cells(gridW_), cells(gridH_)},
                              .usage = gpu::TextureUsage::shaderRead | gpu::TextureUsage::shaderWrite,
                              .storage = storage,
                              .label = label});
}

void FluidSim::resize(std::int64_t width, std::int64_t height) {
  width = std::max<std::int64_t>(width, 32);
  height = std::max<std::int64_t>(height, 8);
  if (width == gridW_ && height == gridH_) return;
  gridW_ = width;
  gridH_ = height;
  // Diagnostics read the dye back; sharing it spares them a copy.
  const auto dyeStorage = NimbraLog::enabled() ? gpu::StorageMode::shared : gpu::StorageMode::gpuPrivate;
  for (auto& field : velocity_)
    field = makeField(gpu::PixelFormat::rg16Float, "velocity", gpu::StorageMode::gpuPrivate);
  for (auto& field : pressure_) field = makeField(gpu::PixelFormat::r16Float, "pressure", gpu::StorageMode::gpuPrivate);
  for (auto& field : dye_) field = makeField(gpu::PixelFormat::rgba16Float, "dye", dyeStorage);
  divergence_ = makeField(gpu::PixelFormat::r16Float, "divergence", gpu::StorageMode::gpuPrivate);
  curl_ = makeField(gpu::PixelFormat::r16Float, "curl", gpu::StorageMode::gpuPrivate);
  velIdx_ = 0;
  pIdx_ = 0;
  dyeIdx_ = 0;
  needsClear = true;
}

void FluidSim::clearFields(gpu::Frame& frame) {
  needsClear = false;
  sinceClear_ = 0;
  for (const auto& field :
       {velocity_[0], velocity_[1], pressure_[0], pressure_[1], dye_[0], dye_[1], divergence_, curl_})
    frame.run({.pipeline = *clear_, .label = "fluid.clear", .target = *field});
}

StepBlock FluidSim::blockFor(const SimParams& params, double seconds) {
  const double scaledSeconds = std::abs(params.dt) / 60.0;
  curlPhase_ = advancedPhase(curlPhase_, curlSteps(params.curlSpeed) * scaledSeconds, stepPeriod);
  emitPhase_ = advancedPhase(emitPhase_, emitSteps(params.emitSpeed) * scaledSeconds, stepPeriod);
  StepBlock block{params, phaseUniform(curlPhase_, stepPeriod), phaseUniform(emitPhase_, stepPeriod)};
  block.params.gridW = static_cast<float>(gridW_);
  block.params.gridH = static_cast<float>(gridH_);
  block.params.emitRate *= firstLight(sinceClear_, seconds, params.dt);
  sinceClear_ += seconds;
  return block;
}

void FluidSim::step(gpu::Frame& frame, const SimParams& params, std::int64_t pressureIterations, double seconds) {
  if (gridW_ < 1 || velocity_[0] == nullptr) return;
  if (needsClear) clearFields(frame);
  const StepBlock block = blockFor(params, seconds);
  const auto bytes = std::as_bytes(std::span(&block, 1));
  constexpr const char* label = "fluid.step";
  const auto in = [](const Pair& pair, std::size_t index) { return pair[index].get(); };
  const auto out = [](const Pair& pair, std::size_t index) -> const gpu::Texture& { return *pair[1 - index]; };

  frame.run({.pipeline = *advectVelocity_,
             .label = label,
             .textures = {in(velocity_, velIdx_)},
             .bytes = bytes,
             .target = out(velocity_, velIdx_)});
  velIdx_ = 1 - velIdx_;
  frame.run({.pipeline = *curlPipeline_, .label = label, .images = {in(velocity_, velIdx_)}, .target = *curl_});
  frame.run({.pipeline = *forces_,
             .label = label,
             .images = {in(velocity_, velIdx_), curl_.get(), in(dye_, dyeIdx_)},
             .bytes = bytes,
             .target = out(velocity_, velIdx_)});
  velIdx_ = 1 - velIdx_;
  frame.run(
      {.pipeline = *divergencePipeline_, .label = label, .images = {in(velocity_, velIdx_)}, .target = *divergence_});
  for (std::int64_t i = pressureIterationsFor(pressureIterations); i > 0; --i) {
    frame.run({.pipeline = *jacobi_,
               .label = label,
               .images = {in(pressure_, pIdx_), divergence_.get()},
               .target = out(pressure_, pIdx_)});
    pIdx_ = 1 - pIdx_;
  }
  frame.run({.pipeline = *project_,
             .label = label,
             .images = {in(velocity_, velIdx_), in(pressure_, pIdx_)},
             .target = out(velocity_, velIdx_)});
  velIdx_ = 1 - velIdx_;
  frame.run({.pipeline = *advectDye_,
             .label = label,
             .textures = {in(dye_, dyeIdx_)},
             .images = {in(velocity_, velIdx_)},
             .bytes = bytes,
             .target = out(dye_, dyeIdx_)});
  dyeIdx_ = 1 - dyeIdx_;
}

}  // namespace veloria
