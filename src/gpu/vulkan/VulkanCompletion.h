#pragma once

#include <vulkan/vulkan_core.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "gpu/vulkan/VulkanContext.h"

namespace veloria::gpu::vulkan {

/// The commands of a submission and its semaphores.
struct Submission {
  VkCommandBuffer commands = VK_NULL_HANDLE;
  VkSemaphore wait = VK_NULL_HANDLE;    ///< binary; colour output waits for it
  VkSemaphore signal = VK_NULL_HANDLE;  ///< binary
};

/// The device's count of submissions: a timeline semaphore that reaches a submission's number when it is done. The
/// drawing thread submits; everything else may be called anywhere.
class VulkanTimeline {
 public:
  explicit VulkanTimeline(VulkanContext& context);

  /// Returns the submission's number. A driver that can't submit counts as lost: throws DeviceLostError.
  std::uint64_t submit(const Submission& submission);
  std::uint64_t submitted() const { return submitted_; }
  std::uint64_t completed() const;
  /// True if the number was reached in time. Marks the device lost when the driver says so.
  bool wait(std::uint64_t number, std::uint64_t nanoseconds) const;
  /// Waits without limit. Throws DeviceLostError.
  void wait(std::uint64_t number) const;

 private:
  VulkanContext& context_;
  SemaphoreOwner semaphore_;
  std::atomic<std::uint64_t> submitted_{0};
};

/// Holds released objects until the GPU can no longer use them. Any thread.
class VulkanRetirement {
 public:
  VulkanRetirement(const VulkanContext& context, const VulkanTimeline& timeline)
      : context_(context), timeline_(timeline) {}

  void retire(std::shared_ptr<void> resource);
  /// An open frame may use anything released before its commit.
  void frameBegun();
  void frameCommitted();
  void collect();

 private:
  struct Entry {
    std::uint64_t number;
    std::shared_ptr<void> resource;
  };
  const VulkanContext& context_;
  const VulkanTimeline& timeline_;
  std::mutex mutex_;
  bool frameOpen_ = false;
  std::vector<std::shared_ptr<void>> waiting_;  // for the open frame to be committed
  std::vector<Entry> entries_;
};

/// Is called when its submission is done.
class CompletionClient {
 public:
  /// On the completion thread.
  virtual void completed(bool failed) noexcept = 0;

 protected:
  CompletionClient() = default;
  ~CompletionClient() = default;

 private:
  friend class VulkanCompletion;
  bool pending_ = false;  // under VulkanCompletion's mutex
};

/// The thread that waits for submissions and calls their clients, in order. It sleeps while nothing is submitted.
class VulkanCompletion {
 public:
  VulkanCompletion(VulkanContext& context, const VulkanTimeline& timeline, VulkanRetirement& retirement);
  ~VulkanCompletion();
  VulkanCompletion(const VulkanCompletion&) = delete;
  VulkanCompletion& operator=(const VulkanCompletion&) = delete;

  /// `number` 0 means that the submission failed.
  void enqueue(std::uint64_t number, CompletionClient& client);
  /// Returns when the client has been called.
  void waitFor(const CompletionClient& client);
  /// Returns when all clients have been called.
  void drain();

 private:
  struct Entry {
    std::uint64_t number;
    CompletionClient* client;
  };
  void run();
  void finish(const Entry& entry);
  bool waitUntilDone(std::uint64_t number) const;

  VulkanContext& context_;
  const VulkanTimeline& timeline_;
  VulkanRetirement& retirement_;
  std::mutex mutex_;
  std::condition_variable work_;
  std::condition_variable changed_;
  std::vector<Entry> entries_;
  std::uint64_t outstanding_ = 0;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace veloria::gpu::vulkan
