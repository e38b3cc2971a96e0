#pragma once

#include <vulkan/vulkan_core.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "gpu/Surface.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanDrawable.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "gpu/vulkan/VulkanTexture.h"

namespace veloria::gpu::vulkan {

class VulkanDevice;

/// A texture, and the memory that its picture is copied to when it is presented.
class HostDrawable final : public VulkanDrawable {
 public:
  HostDrawable(VulkanDevice& device, const PictureSink& sink, Size size);
  ~HostDrawable() override;

  const Texture& texture() const override { return texture_; }
  void recordFirstUse(VkCommandBuffer) override {}
  void drawnInto() override {}
  void recordPresent(VkCommandBuffer commands) override;
  void submitted(std::uint64_t) override {}
  void present() override {}
  bool awaitsCompletion() const override { return true; }
  void completed(bool failed) noexcept override;

  enum class State : std::uint8_t { free, taken, presented };
  State state() const { return state_; }
  void take() { state_ = State::taken; }

 private:
  VulkanDevice& device_;
  const PictureSink& sink_;
  VulkanTexture texture_;
  VulkanBuffer picture_;
  std::atomic<State> state_{State::free};
};

class VulkanHostSurface final : public Surface {
 public:
  VulkanHostSurface(VulkanDevice& device, PictureSink sink);
  ~VulkanHostSurface() override;

  void configure(Size size, PixelFormat wanted) override;
  PixelFormat format() const override;
  Size size() const override { return size_; }
  Drawable* nextDrawable() override;

 private:
  void makeDrawables();
  HostDrawable* find(HostDrawable::State state) const;

  VulkanDevice& device_;
  PictureSink sink_;
  Size size_;
  bool stale_ = true;
  std::vector<std::unique_ptr<HostDrawable>> drawables_;
  std::vector<std::unique_ptr<HostDrawable>> retired_;  // of an older size, and not handed over yet
};

}  // namespace veloria::gpu::vulkan
