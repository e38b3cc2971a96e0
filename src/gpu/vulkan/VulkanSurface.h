#pragma once

#include <vulkan/vulkan_core.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "gpu/Surface.h"
#include "gpu/vulkan/SurfaceChoice.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "gpu/vulkan/VulkanOwner.h"

namespace veloria::gpu::vulkan {

class VulkanDevice;
class VulkanSwapchain;

/// When to try again after failures: at once at first, then after pauses that double up to one second.
class RetryPause {
 public:
  using Clock = std::chrono::steady_clock;
  bool over(Clock::time_point now) const { return now >= next_; }
  void failed(Clock::time_point now);
  void succeeded() { *this = {}; }

 private:
  Clock::duration pause_{};
  Clock::time_point next_{};
};

class VulkanSurface final : public Surface {
 public:
  VulkanSurface(VulkanDevice& device, NativeSurfaceFactory makeNative);
  ~VulkanSurface() override;

  void configure(Size size, PixelFormat wanted) override;
  PixelFormat format() const override;
  Size size() const override { return size_; }
  Drawable* nextDrawable() override;

 private:
  bool ensureSurface();
  bool makeNativeSurface();
  std::optional<VkSurfaceFormatKHR> queryFormat() const;
  bool ensureSwapchain();
  std::optional<SurfaceShape> queryShape() const;
  bool makeSwapchain();
  bool worthRebuilding() const;
  void followLateWindow();
  void retireSwapchain();
  void letRetiredGo();
  void dropSurface();
  void react();

  VulkanDevice& device_;
  NativeSurfaceFactory makeNative_;
  Size size_;
  PixelFormat wanted_ = PixelFormat::invalid;
  RetryPause pause_;
  SurfaceOwner surface_;
  std::optional<VkSurfaceFormatKHR> format_;
  std::unique_ptr<VulkanSwapchain> swapchain_;
  struct Retired {
    std::unique_ptr<VulkanSwapchain> swapchain;
    std::uint64_t after;  // a submission; what was presented before it has been dealt with
  };
  std::vector<Retired> retired_;
  RetryPause::Clock::time_point swapchainMade_{};
  RetryPause::Clock::time_point sizeChecked_{};
  bool stale_ = false;
};

}  // namespace veloria::gpu::vulkan
