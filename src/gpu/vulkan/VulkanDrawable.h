#pragma once

#include <vulkan/vulkan_core.h>

#include <cstdint>

#include "gpu/Surface.h"

namespace veloria::gpu::vulkan {

/// A drawable as a frame sees it. On the drawing thread, but for completed().
class VulkanDrawable : public Drawable {
 public:
  /// Before the first pass of a frame that draws into it.
  virtual void recordFirstUse(VkCommandBuffer commands) = 0;
  /// A frame that draws into it is about to be submitted.
  virtual void drawnInto() = 0;
  /// After the last pass of the frame that presents it.
  virtual void recordPresent(VkCommandBuffer commands) = 0;
  /// What the submission waits for, and what the presenting one signals; null for nothing.
  virtual VkSemaphore acquireSemaphore() const { return VK_NULL_HANDLE; }
  virtual VkSemaphore presentSemaphore() const { return VK_NULL_HANDLE; }
  /// A submission that draws into it or presents it has been made.
  virtual void submitted(std::uint64_t number) = 0;
  /// The presenting submission has been made.
  virtual void present() = 0;
  /// Whether completed() is to be called. Such a drawable has to live until then, others only until the GPU is done.
  virtual bool awaitsCompletion() const { return false; }
  /// The presenting submission is done. On the completion thread.
  virtual void completed(bool) noexcept {}
};

}  // namespace veloria::gpu::vulkan
