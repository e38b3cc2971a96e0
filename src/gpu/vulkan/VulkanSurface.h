#pragma once

#include <vulkan/vulkan_core.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "gpu/PictureBuffers.h"
#include "gpu/Surface.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "gpu/vulkan/VulkanFrame.h"
#include "gpu/vulkan/VulkanInstance.h"
#include "gpu/vulkan/VulkanSwapchain.h"
#include "gpu/vulkan/VulkanTexture.h"

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

class VulkanDevice;

/// A texture, and the memory that its picture is copied to when it is presented.
class HostDrawable final : public VulkanDrawable {
 public:
  HostDrawable(VulkanDevice& device, PictureBuffers& buffers, Size size);
  ~HostDrawable() override;

  const Texture& texture() const override { return texture_; }
  void recordFirstUse(VkCommandBuffer) override {}
  void drawnInto() override {}
  void recordPresent(VkCommandBuffer commands) override;
  void submitted(std::uint64_t) override {}
  void present() override {}
  bool awaitsCompletion() const override { return true; }
  void completed(bool failed) noexcept override;

  enum class State : std::uint8_t { free, acquired, presented };
  State state() const { return state_; }
  /// `shown`: an acquired picture of the same size.
  void acquire(PictureBuffer& shown);

 private:
  VulkanDevice& device_;
  PictureBuffers& buffers_;
  VulkanTexture texture_;
  VulkanBuffer picture_;
  PictureBuffer* shown_ = nullptr;
  std::atomic<State> state_{State::free};
};

class VulkanHostSurface final : public Surface {
 public:
  VulkanHostSurface(VulkanDevice& device, std::unique_ptr<PictureBuffers> buffers);
  ~VulkanHostSurface() override;

  void configure(Size size, PixelFormat wanted) override;
  PixelFormat format() const override;
  Size size() const override { return size_; }
  Drawable* nextDrawable() override;

 private:
  void makeDrawables();
  HostDrawable* find(HostDrawable::State state) const;

  VulkanDevice& device_;
  std::unique_ptr<PictureBuffers> buffers_;
  Size size_;
  bool stale_ = true;
  std::vector<std::unique_ptr<HostDrawable>> drawables_;
  std::vector<std::unique_ptr<HostDrawable>> retired_;  // of an older size, and not handed over yet
};

}  // namespace veloria::gpu::vulkan
