#include "render/NimbraRenderer.h"

#include <cstdlib>
#include <span>
#include <string>
#include <utility>

#include "base/Log.h"
#include "render/FramePlan.h"
#include "render/RendererError.h"
#include "render/Uniforms.h"

namespace veloria {

namespace {

constexpr float glowThreshold = 0.001F;
// The parts that f_final is compiled with.
constexpr std::uint32_t extraTextMask = 1;
constexpr std::uint32_t extraHousing = 2;
constexpr std::uint32_t extraEnlarging = 4;
constexpr std::uint32_t extraMirror = 8;

constexpr const char* vertexFunction = "v_fullscreen";

template <typename Block>
std::span<const std::byte> bytesOf(const Block& block) {
  return std::as_bytes(std::span(&block, 1));
}

/// A wrapped counter would make every later message wrong.
void countUp(std::int64_t& counter) {
  if (__builtin_add_overflow(counter, 1, &counter)) std::abort();
}

std::unique_ptr<gpu::FrameQueue> queueOf(gpu::Device& device) {
  auto queue = device.makeFrameQueue();
  if (queue == nullptr) throw RendererError::noDevice();
  return queue;
}

const char* yesNo(bool value) {
  return value ? "true" : "false";
}

}  // namespace

NimbraRenderer::NimbraRenderer(gpu::Device& device, const gpu::Library& library, RenderStats& stats, MediaClock clock)
    : device_(device),
      library_(library),
      stats_(stats),
      clock_(std::move(clock)),
      ownStats_(clock_),
      queue_(queueOf(device)),
      sim_(device, library) {
  nimbraPipeline_ = pipeline("f_nimbra", scenePixelFormat);
  downPipeline_ = pipeline("f_down", scenePixelFormat);
  blurPipeline_ = pipeline("f_blur", scenePixelFormat);
}

NimbraRenderer::~NimbraRenderer() {
  device_.waitIdle();
}

std::shared_ptr<gpu::Pipeline> NimbraRenderer::pipeline(const char* fragment, gpu::PixelFormat format,
                                                        std::uint32_t variant) {
  for (const char* name : {vertexFunction, fragment}) {
    if (!library_.contains(name)) throw RendererError::missingFunction(name);
  }
  return device_.makePipeline(
      library_, {.function = fragment, .vertexFunction = vertexFunction, .format = format, .variant = variant});
}

std::uint32_t NimbraRenderer::compositeExtras(gpu::Size drawable, bool hasBar) const {
  const bool housing = geometry && geometry->notch && frameConfig_.notchMode != NotchMode::ignore;
  return (frameConfig_.preserveMenuBarText && hasBar ? extraTextMask : 0) | (housing ? extraHousing : 0) |
         (sceneTex_->size() != drawable ? extraEnlarging : 0) | (isMirrored() ? extraMirror : 0);
}

bool NimbraRenderer::ensureFinalPipeline(gpu::PixelFormat format, std::uint32_t extras) {
  const bool fits = format == finalPipelineFormat_ && extras == finalPipelineExtras_;
  if (format == gpu::PixelFormat::invalid || fits) return finalPipeline_ != nullptr;
  try {
    finalPipeline_ = pipeline("f_final", format, extras);
    finalPipelineFormat_ = format;
    finalPipelineExtras_ = extras;
  } catch (const gpu::DeviceLostError&) {
    throw;
  } catch (const std::exception& error) {
    systemLog("Veloria: final pipeline failed for " + std::to_string(static_cast<std::uint32_t>(format)) + ": " +
              error.what());
    finalPipeline_.reset();
    finalPipelineFormat_ = gpu::PixelFormat::invalid;
  }
  return finalPipeline_ != nullptr;
}

std::shared_ptr<gpu::Texture> NimbraRenderer::makeTarget(gpu::Size size, const char* label, gpu::PixelFormat format) {
  return device_.makeTexture({.format = format,
                              .size = size,
                              .usage = gpu::TextureUsage::shaderRead | gpu::TextureUsage::renderTarget,
                              .storage = gpu::StorageMode::gpuPrivate,
                              .label = label});
}

void NimbraRenderer::resizeTargets(gpu::Size size) {
  if (size.width < 1 || size.height < 1 || size == drawableSize_) return;
  drawableSize_ = size;
  sceneScale_ = sceneScaleFor(size, config.quality);
  const gpu::Size scene = sceneSizeFor(size, sceneScale_);
  const gpu::Size glow = glowSizeFor(scene);
  sceneTex_ = makeTarget(scene, "scene");
  glowA_ = makeTarget(glow, "glowA");
  glowB_ = makeTarget(glow, "glowB");
  resizeSimGrid(size);
}

void NimbraRenderer::resizeSimGrid(gpu::Size size) {
  const GridSize grid = gridSizeFor(size, config.quality, config.verticalStretch);
  sim_.resize(grid.width, grid.height);
  for (RenderStats* stats : {&stats_, &ownStats_}) stats->setGrid(grid.width, grid.height);
  NimbraLog::debugf("sim grid %lldx%lld for drawable %ux%u", static_cast<long long>(grid.width),
                    static_cast<long long>(grid.height), size.width, size.height);
}

void NimbraRenderer::draw(FrameTarget& target) {
  if (device_.lost()) throw gpu::DeviceLostError("the device no longer answers");
  frameConfig_ = config;
  // The grid follows the drawable: a first draw sizes it, and so does a target that changed.
  resizeTargets(target.drawableSize());
  gpu::Drawable* drawable = target.currentDrawable();
  if (drawable == nullptr || sceneTex_ == nullptr || sim_.dyeTexture() == nullptr) {
    return skipFrame(target, drawable != nullptr);
  }
  const Bar bar = backdrop ? backdrop->numbered() : Bar();
  if (!ensureFinalPipeline(target.colorPixelFormat(),
                           compositeExtras(drawable->texture().size(), bar.first != nullptr)))
    return;

  const double now = clock_();
  const double dt = frameSeconds(now, lastStamp_);
  const double elapsed = lastStamp_ == 0 ? dt : std::max(now - lastStamp_, dt);
  lastStamp_ = now;
  const double scaled = uniformFloat(frameConfig_.timeScale) * dt;
  simTime_ += scaled;
  motion_.advance(frameConfig_, scaled, dt);

  gpu::Frame* frame = beginFrame();
  if (frame == nullptr) return;
  runPasses(*frame, *drawable, bar, elapsed, scaled);
  frame->present(*drawable);
  frame->commit([this](const gpu::Completion& completion) { completed(completion); });
  frameDone();
}

gpu::Frame* NimbraRenderer::beginFrame() {
  inflight_.acquire();
  gpu::Frame* frame = queue_->begin("nimbra.frame");
  if (frame == nullptr) inflight_.release();
  return frame;
}

void NimbraRenderer::completed(const gpu::Completion& completion) {
  for (RenderStats* stats : {&stats_, &ownStats_}) stats->recordFrame(completion.gpuEnd - completion.gpuStart);
  if (frameObserver_) frameObserver_(completion);
  inflight_.release();
}

void NimbraRenderer::runGlow(gpu::Frame& frame) {
  const float radius = uniformFloat(std::min(frameConfig_.glowRadius, maxGlowRadius));
  const BlurParams across{1, 0, radius};
  const BlurParams down{0, 1, radius};
  frame.run({.pipeline = *downPipeline_, .label = "glow.down", .textures = {sceneTex_.get()}, .target = *glowA_});
  frame.run({.pipeline = *blurPipeline_,
             .label = "glow.blurH",
             .textures = {glowA_.get()},
             .bytes = bytesOf(across),
             .target = *glowB_});
  frame.run({.pipeline = *blurPipeline_,
             .label = "glow.blurV",
             .textures = {glowB_.get()},
             .bytes = bytesOf(down),
             .target = *glowA_});
}

void NimbraRenderer::runMask(gpu::Frame& frame, const Bar& bar, const BandBlock& block) {
  const RenderParams& params = block.params;
  const std::array<float, 5> settings{params.textThreshold, params.textSoftness, params.textDilate, params.textBlur,
                                      params.textShadowSpread};
  const bool fits = mask_.texture != nullptr && mask_.texture->size() == drawableSize_;
  if (fits && mask_.bar == bar.second && mask_.settings == settings) return;
  constexpr gpu::PixelFormat format = gpu::PixelFormat::rg16Float;
  if (maskPipeline_ == nullptr) maskPipeline_ = pipeline("f_mask", format);
  if (!fits) mask_.texture = makeTarget(drawableSize_, "text mask", format);
  mask_.bar = bar.second;
  mask_.settings = settings;
  frame.run({.pipeline = *maskPipeline_,
             .label = "text mask",
             .textures = {bar.first.get()},
             .bytes = bytesOf(block),
             .target = *mask_.texture});
}

void NimbraRenderer::runPasses(gpu::Frame& frame, gpu::Drawable& drawable, const Bar& bar, double elapsed,
                               double scaledSeconds) {
  const PointerState seen = isMirrored() ? mirrored(pointer, geometry->windowFrame.height) : pointer;
  const Extent view = viewSizeFor(drawableSize_, geometry);
  sim_.step(frame, makeSimParams(frameConfig_, scaledSeconds * 60, simTime_, seen, view),
            frameConfig_.pressureIterations, elapsed);

  BandBlock block{{}, motion_.rays(), motion_.hueDrift(), motion_.hueSwing()};
  RenderParams& params = block.params;
  const Extent scene{drawableSize_.width * sceneScale_, drawableSize_.height * sceneScale_};
  params = makeRenderParams(frameConfig_, simTime_, scene, geometry, seen,
                            debugSolidValue(std::getenv("NIMBRA_DEBUG_SOLID")));
  frame.run({.pipeline = *nimbraPipeline_,
             .label = "nimbra",
             .textures = {sim_.dyeTexture(), sim_.velocityTexture()},
             .bytes = bytesOf(block),
             .target = *sceneTex_});

  const bool glows = params.glowAmount > glowThreshold;
  if (glows) runGlow(frame);

  const bool masksText = (finalPipelineExtras_ & extraTextMask) != 0;
  if (masksText) runMask(frame, bar, block);
  params.textMaskOn = masksText ? 1.0F : 0.0F;
  const gpu::Texture* light = sceneTex_.get();
  frame.run({.pipeline = *finalPipeline_,
             .label = "composite",
             .textures = {light, glows ? glowA_.get() : light, masksText ? mask_.texture.get() : light},
             .bytes = bytesOf(block),
             .target = drawable.texture()});
}

void NimbraRenderer::frameDone() {
  countUp(frameCount_);
  if (frameCount_ % 120 != 1 || !NimbraLog::enabled()) return;
  const RenderStats::Figures figures = stats_.figures();
  NimbraLog::debugf("frame %lld grid=%lldx%lld gpu=%.2fms fps=%.0f budget=%.0f%%", static_cast<long long>(frameCount_),
                    static_cast<long long>(figures.gridW), static_cast<long long>(figures.gridH), figures.gpuMsAvg,
                    figures.fpsAvg, figures.gpuMsAvg / 16.67 * 100);
}

void NimbraRenderer::skipFrame(const FrameTarget& target, bool drawable) {
  countUp(missedFrames_);
  if (missedFrames_ % 60 != 1 || !NimbraLog::enabled()) return;
  const gpu::Size size = target.drawableSize();
  NimbraLog::debugf("draw skipped: drawable=%s scene=%s dye=%s size=(%u.0, %u.0)", yesNo(drawable),
                    yesNo(sceneTex_ != nullptr), yesNo(sim_.dyeTexture() != nullptr), size.width, size.height);
}

}  // namespace veloria
