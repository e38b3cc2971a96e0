#pragma once

#include <vulkan/vulkan_core.h>

#include <array>
#include <cstddef>
#include <memory>

#include "gpu/Frame.h"
#include "gpu/vulkan/VulkanBindings.h"
#include "gpu/vulkan/VulkanCompletion.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanHazards.h"
#include "gpu/vulkan/VulkanTimestamps.h"

namespace veloria::gpu::vulkan {

class VulkanDevice;
class VulkanDrawable;
class VulkanPipeline;

/// One of a queue's three. Everything that it needs is its own and is used again.
class VulkanFrame final : public Frame, public CompletionClient {
 public:
  explicit VulkanFrame(VulkanDevice& device);

  /// Starts it anew; it must not be pending. Throws DeviceError when the driver can't.
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
