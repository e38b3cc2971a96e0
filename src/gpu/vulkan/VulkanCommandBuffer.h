#pragma once

#include <vulkan/vulkan_core.h>

#include <string>
#include <vector>

#include "gpu/CommandBuffer.h"
#include "gpu/vulkan/VulkanBindings.h"
#include "gpu/vulkan/VulkanCompletion.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanEncoder.h"
#include "gpu/vulkan/VulkanHazards.h"
#include "gpu/vulkan/VulkanTimestamps.h"
#include "gpu/vulkan/VulkanUniforms.h"

namespace veloria::gpu::vulkan {

class VulkanDevice;
class VulkanDrawable;

/// One of a queue's three. Everything that it needs for a frame is its own and is used again.
class VulkanCommandBuffer final : public CommandBuffer, public CompletionClient {
 public:
  explicit VulkanCommandBuffer(VulkanDevice& device);

  /// Starts it anew; it must not be pending. Throws DeviceError when the driver can't.
  void begin(bool profiling);
  bool recording() const { return recording_; }

  /// Another command buffer is encoded at the same time: the order of encoding is not that of execution, so this one
  /// is submitted between full barriers.
  void markInterleaved() { interleaved_ = true; }

  VkCommandBuffer commands() const { return commands_; }
  VulkanUniforms& uniforms() { return uniforms_; }
  VulkanBindings& bindings() { return bindings_; }
  VulkanTimestamps& timestamps() { return timestamps_; }
  VkRenderPass renderPassFor(const VulkanTexture& target) const;
  VulkanHazards& beginPass();
  void recordBarrier(const PassBarrier& barrier) const;
  void encoderEnded();

 private:
  void doSetLabel(std::string_view label) override;
  void doAddCompletedHandler(CompletedHandler handler) override;
  ComputeEncoder* doComputeEncoder(std::string_view label) override;
  RenderEncoder* doRenderEncoder(const Texture& target, std::string_view label) override;
  void doPresent(Drawable& drawable) override;
  void doCommit() override;
  void doWait() override;
  void doDiscard() override;
  bool encoderOpen() const override { return encoderOpen_; }

  void completed(bool failed) noexcept override;
  void openEncoder(std::string_view label);
  void useDrawable(VulkanDrawable& drawable);
  void prepareDrawables();
  std::uint64_t submit();
  void close();
  void fail();

  VulkanDevice& device_;
  CommandPoolOwner pool_;
  VkCommandBuffer commands_ = VK_NULL_HANDLE;
  VulkanUniforms uniforms_;
  VulkanBindings bindings_;
  VulkanTimestamps timestamps_;
  VulkanHazards hazards_;
  VulkanComputeEncoder computeEncoder_;
  VulkanRenderEncoder renderEncoder_;
  std::vector<CompletedHandler> handlers_;
  std::vector<VulkanDrawable*> drawables_;  // drawn into here
  VulkanDrawable* presented_ = nullptr;
  VulkanDrawable* awaiting_ = nullptr;  // the presented one, if it wants to know when that is done
  std::vector<VkSemaphore> waits_;
  std::string label_;
  bool recording_ = false;
  bool encoderOpen_ = false;
  bool interleaved_ = false;
};

}  // namespace veloria::gpu::vulkan
