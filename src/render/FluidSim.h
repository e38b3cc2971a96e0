#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "gpu/Device.h"
#include "render/Uniforms.h"

namespace veloria {

/// The fluid: velocity, pressure and dye on a grid, moved on by one step a frame on the GPU.
///
/// Velocities are cells per 60 Hz frame, x to the right, y downwards (row 0 is the top). The dye's rgb is coloured
/// linear light, its a the amount. Thread: the one that draws. The device must outlive it.
class FluidSim {
 public:
  /// Throws RendererError::missingFunction for a kernel that the library lacks, gpu::DeviceError if the driver refuses
  /// one.
  FluidSim(gpu::Device& device, const gpu::Library& library);

  /// Sets the grid, at least 32 x 8 cells. A new size starts the flow from rest; the same size changes nothing. Throws
  /// gpu::DeviceError if a texture can't be made.
  void resize(std::int64_t width, std::int64_t height);

  /// Runs one step: velocity advection, curl, forces, divergence, `pressureIterations` Jacobi passes (at least one),
  /// projection, dye advection. Does nothing before the first resize(). `seconds` is the real time since the frame
  /// before, above 0. For a second after a clearing it emits more light than `params` says, so that an empty band
  /// lights up at once.
  void step(gpu::Frame& frame, const SimParams& params, std::int64_t pressureIterations, double seconds);

  /// The live fields; nullptr before the first resize().
  const gpu::Texture* dyeTexture() const { return dye_[dyeIdx_].get(); }
  const gpu::Texture* velocityTexture() const { return velocity_[velIdx_].get(); }
  const gpu::Texture* pressureTexture() const { return pressure_[pIdx_].get(); }

  std::int64_t gridW() const { return gridW_; }
  std::int64_t gridH() const { return gridH_; }

  /// If true, the next step first zeroes every field.
  bool needsClear = true;

 private:
  using Pair = std::array<std::shared_ptr<gpu::Texture>, 2>;

  std::shared_ptr<gpu::Texture> makeField(gpu::PixelFormat format, const char* label, gpu::StorageMode storage);
  void clearFields(gpu::Frame& frame);
  StepBlock blockFor(const SimParams& params, double seconds);

  gpu::Device& device_;
  std::int64_t gridW_ = 0;
  std::int64_t gridH_ = 0;
  Pair velocity_;
  Pair pressure_;
  Pair dye_;
  std::shared_ptr<gpu::Texture> divergence_;
  std::shared_ptr<gpu::Texture> curl_;
  std::size_t velIdx_ = 0;
  std::size_t pIdx_ = 0;
  std::size_t dyeIdx_ = 0;
  double curlPhase_ = 0;
  double emitPhase_ = 0;
  double sinceClear_ = 0;  ///< real seconds

  std::shared_ptr<gpu::Pipeline> advectVelocity_;
  std::shared_ptr<gpu::Pipeline> curlPipeline_;
  std::shared_ptr<gpu::Pipeline> forces_;
  std::shared_ptr<gpu::Pipeline> divergencePipeline_;
  std::shared_ptr<gpu::Pipeline> jacobi_;
  std::shared_ptr<gpu::Pipeline> project_;
  std::shared_ptr<gpu::Pipeline> advectDye_;
  std::shared_ptr<gpu::Pipeline> clear_;
};

}  // namespace veloria
