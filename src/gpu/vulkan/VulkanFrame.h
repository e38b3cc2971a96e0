#pragma once

#include <vulkan/vulkan_core.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "gpu/Frame.h"
#include "gpu/Surface.h"
#include "gpu/vulkan/VulkanBindings.h"
#include "gpu/vulkan/VulkanCompletion.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanHazards.h"

namespace veloria::gpu::vulkan {

/// A drawable as a frame uses it. Called on the drawing thread, except completed().
class VulkanDrawable : public Drawable {
 public:
  /// Before the first pass of a frame that draws into it.
  virtual void recordFirstUse(VkCommandBuffer commands) = 0;
  /// Before the submission of a frame that draws into it.
  virtual void drawnInto() = 0;
  /// After the last pass of the frame that presents it.
  virtual void recordPresent(VkCommandBuffer commands) = 0;
  /// The semaphore that its submission waits for, and the one that the presenting submission signals; null for none.
  virtual VkSemaphore acquireSemaphore() const { return VK_NULL_HANDLE; }
  virtual VkSemaphore presentSemaphore() const { return VK_NULL_HANDLE; }
  /// After a submission that draws into it or presents it.
  virtual void submitted(std::uint64_t number) = 0;
  /// After the presenting submission.
  virtual void present() = 0;
  /// Whether to call completed(). Such a drawable must live until then, others only until the GPU is done.
  virtual bool awaitsCompletion() const { return false; }
  /// After the presenting submission is done. Called on the completion thread.
  virtual void completed(bool) noexcept {}
};

/// The times of one frame: its start and end, and with profiling those of every pass.
/// Grows to what the busiest frame needed; passes beyond that are not measured in the frame that first has them.
class VulkanTimestamps {
 public:
  explicit VulkanTimestamps(const VulkanContext& context);

  void begin(VkCommandBuffer commands, bool profiling);
  void beginPass(VkCommandBuffer commands, const char* name);
  void endPass(VkCommandBuffer commands);
  void end(VkCommandBuffer commands);

  /// Reads the times into `completion`, whose passes stay valid until begin(). Call it after the commands have run.
  void resolve(Completion& completion);

 private:
  void makePool(std::uint32_t queries);
  void write(VkCommandBuffer commands, VkPipelineStageFlagBits stage);
  double seconds(std::uint64_t ticks) const;
  void addPass(const char* name, double duration);

  const VulkanContext& context_;
  QueryPoolOwner pool_;
  QueryPoolOwner settling_;  ///< second timestamps, never read
  std::uint32_t capacity_ = 0;
  std::uint32_t used_ = 0;
  std::uint32_t wanted_ = 0;
  bool profiling_ = false;
  bool inPass_ = false;
  std::vector<const char*> names_;
  std::vector<std::uint64_t> ticks_;
  std::vector<PassTime> passes_;
};

class VulkanDevice;
class VulkanDrawable;
class VulkanPipeline;

/// One of a queue's three. It owns and reuses everything that it needs.
class VulkanFrame final : public Frame, public CompletionClient {
 public:
  explicit VulkanFrame(VulkanDevice& device);

  /// Starts it again; it must not be pending. Throws DeviceError if the driver fails.
  void begin(const char* label, bool profiling);

 private:
  void doRun(const Pass& pass) override;
  void doPresent(Drawable& drawable) override;
  void doCommit(CompletedHandler handler) override;
  void completed(bool failed) noexcept override;

  void recordBarrier(const Pass& pass);
  void bind(const VulkanPipeline& pipeline, const Pass& pass);
  void dispatch(const VulkanPipeline& pipeline, Size grid);
  void draw(const VulkanPipeline& pipeline, const Texture& target);
  void use(VulkanDrawable& drawable);
  void finishRecording();
  std::uint64_t submit();
  void fail();

  VulkanDevice& device_;
  CommandPoolOwner pool_;
  VkCommandBuffer commands_ = VK_NULL_HANDLE;
  VulkanTextureSets textureSets_;
  VulkanUniforms uniforms_;
  VulkanTimestamps timestamps_;
  VulkanHazards hazards_;
  VkPipeline bound_ = VK_NULL_HANDLE;
  CompletedHandler handler_;
  VulkanDrawable* drawable_ = nullptr;
  VulkanDrawable* awaiting_ = nullptr;  // the drawable, if it wants to know when it is done; others may be gone by then
  bool drawn_ = false;                  // into the drawable
  bool presented_ = false;              // the drawable
};

/// Three frames in turn. Every queue submits to the device's one.
class VulkanQueue final : public FrameQueue {
 public:
  explicit VulkanQueue(VulkanDevice& device);
  ~VulkanQueue() override;

  void setProfiling(bool on) override { profiling_ = on; }

 private:
  static constexpr std::size_t frameCount = 3;

  Frame* doBegin(const char* label) override;

  VulkanDevice& device_;
  std::array<std::unique_ptr<VulkanFrame>, frameCount> frames_;
  std::size_t next_ = 0;
  bool profiling_ = false;
};

}  // namespace veloria::gpu::vulkan
