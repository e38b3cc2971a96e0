#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <semaphore>
#include <utility>

#include "base/MediaClock.h"
#include "gpu/Device.h"
#include "ports/FrameTarget.h"
#include "render/FluidSim.h"
#include "render/MotionPhases.h"
#include "render/RenderStats.h"
#include "render/StripGeometry.h"
#include "render/TextureBox.h"
#include "render/Uniforms.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// Draws one overlay: steps the fluid, draws the band into an offscreen scene, blurs a glow from it and composites both
/// into the target's drawable.
///
/// Thread: the main thread; GPU completions only touch the statistics and the in-flight count. The device and library
/// must outlive it. At most two frames are in flight; draw() waits for the older one.
class NimbraRenderer {
 public:
  static constexpr gpu::PixelFormat scenePixelFormat = gpu::PixelFormat::rgba16Float;

  /// Throws RendererError for a missing function or a device that makes no queue, gpu::DeviceError if the driver
  /// refuses a pipeline.
  NimbraRenderer(gpu::Device& device, const gpu::Library& library, RenderStats& stats = RenderStats::shared(),
                 MediaClock clock = mediaTime);
  ~NimbraRenderer();
  NimbraRenderer(const NimbraRenderer&) = delete;
  NimbraRenderer& operator=(const NimbraRenderer&) = delete;

  /// Draws one frame. A frame that can't be drawn is skipped and counted. Throws gpu::DeviceLostError when the device
  /// is gone; the renderer can't be used any more.
  void draw(FrameTarget& target);

  /// Sizes the offscreen textures and the fluid's grid; no effect for 0 x 0 or an unchanged size.
  void resizeTargets(gpu::Size size);

  /// Sizes the grid only, from the current settings.
  void resizeSimGrid(gpu::Size size);

  /// The settings for the next frame: the driven record.
  NimbraConfig config;
  /// The band's place; without one nothing is known of the housing and the bleed.
  std::optional<StripGeometry> geometry;
  /// Pictures of the menu bar whose text is kept clear; may be null.
  std::shared_ptr<TextureBox> backdrop;
  PointerState pointer;

  FluidSim& sim() { return sim_; }
  gpu::Size drawableSize() const { return drawableSize_; }
  double sceneScale() const { return sceneScale_; }
  double simTime() const { return simTime_; }
  std::int64_t frameCount() const { return frameCount_; }
  std::int64_t missedFrames() const { return missedFrames_; }
  /// This renderer's own figures; RenderStats::shared() has those of all renderers.
  RenderStats::Figures figures() const { return ownStats_.figures(); }
  gpu::FrameQueue& queue() { return *queue_; }

  /// An extra action on every frame's completion (GPU thread); for measurements. Set it only while nothing is in
  /// flight.
  void setFrameObserver(gpu::CompletedHandler observer) { frameObserver_ = std::move(observer); }

 private:
  std::shared_ptr<gpu::Pipeline> pipeline(const char* fragment, gpu::PixelFormat format, std::uint32_t variant = 0);
  bool ensureFinalPipeline(gpu::PixelFormat format, std::uint32_t extras);
  std::shared_ptr<gpu::Texture> makeTarget(gpu::Size size, const char* label,
                                           gpu::PixelFormat format = scenePixelFormat);
  gpu::Frame* beginFrame();
  void completed(const gpu::Completion& completion);
  void runGlow(gpu::Frame& frame);
  /// The newest picture of the bar and its number.
  using Bar = std::pair<std::shared_ptr<gpu::Texture>, std::uint64_t>;
  void runPasses(gpu::Frame& frame, gpu::Drawable& drawable, const Bar& bar, double elapsed, double scaledSeconds);
  void runMask(gpu::Frame& frame, const Bar& bar, const BandBlock& block);
  bool isMirrored() const { return geometry && geometry->edge == PanelEdge::bottom; }
  std::uint32_t compositeExtras(gpu::Size drawable, bool hasBar) const;
  void skipFrame(const FrameTarget& target, bool drawable);
  void frameDone();

  gpu::Device& device_;
  const gpu::Library& library_;
  RenderStats& stats_;
  MediaClock clock_;
  RenderStats ownStats_;
  std::unique_ptr<gpu::FrameQueue> queue_;
  FluidSim sim_;
  std::shared_ptr<gpu::Pipeline> nimbraPipeline_;
  std::shared_ptr<gpu::Pipeline> downPipeline_;
  std::shared_ptr<gpu::Pipeline> blurPipeline_;
  std::shared_ptr<gpu::Pipeline> finalPipeline_;
  gpu::PixelFormat finalPipelineFormat_ = gpu::PixelFormat::invalid;
  std::uint32_t finalPipelineExtras_ = 0;

  std::shared_ptr<gpu::Texture> sceneTex_;
  std::shared_ptr<gpu::Texture> glowA_;
  std::shared_ptr<gpu::Texture> glowB_;
  /// The bar's text, and what it was found from.
  struct Mask {
    std::shared_ptr<gpu::Texture> texture;
    std::uint64_t bar = 0;
    std::array<float, 5> settings{};
  };
  Mask mask_;
  std::shared_ptr<gpu::Pipeline> maskPipeline_;
  gpu::Size drawableSize_;
  double sceneScale_ = 1.0;

  NimbraConfig frameConfig_;  ///< this frame's copy; kept so that copying reuses its memory
  double simTime_ = 0;
  BandMotion motion_;
  double lastStamp_ = 0;
  std::counting_semaphore<2> inflight_{2};
  std::int64_t frameCount_ = 0;
  std::int64_t missedFrames_ = 0;
  gpu::CompletedHandler frameObserver_;
};

}  // namespace veloria
