#include "gpu/vulkan/VulkanPipelineCache.h"

#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>

#include "base/Log.h"
#include "gpu/vulkan/VulkanError.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr std::uint64_t maxFileBytes = std::uint64_t{64} << 20;

struct Head {
  char magic[8];
  std::uint64_t length;
  std::uint64_t checksum;
};
static_assert(sizeof(Head) == 24);
constexpr char magic[8] = {'v', 'l', 'p', 'i', 'p', 'e', '0', '1'};

// FNV-1a: http://www.isthe.com/chongo/tech/comp/fnv/
std::uint64_t checksumOf(std::span<const std::byte> data) {
  std::uint64_t hash = 14695981039346656037U;
  for (const std::byte byte : data) hash = (hash ^ static_cast<std::uint64_t>(byte)) * 1099511628211U;
  return hash;
}

std::vector<std::byte> readFile(const std::filesystem::path& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  if (error || size > maxFileBytes || !std::filesystem::is_regular_file(path, error)) return {};
  std::vector<std::byte> bytes(size);
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
  return file ? bytes : std::vector<std::byte>();
}

bool writeFile(const std::filesystem::path& path, const std::vector<std::byte>& bytes) {
  std::filesystem::path beside = path;
  beside += "." + std::to_string(getpid()) + ".tmp";
  std::error_code error;
  std::filesystem::create_directories(path.parent_path(), error);
  {
    std::ofstream file(beside, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
      std::filesystem::remove(beside, error);
      return false;
    }
  }
  std::filesystem::rename(beside, path, error);
  if (!error) return true;
  std::filesystem::remove(beside, error);
  return false;
}

}  // namespace

std::vector<std::byte> packPipelineCache(std::span<const std::byte> data) {
  Head head{};
  std::memcpy(head.magic, magic, sizeof magic);
  head.length = data.size();
  head.checksum = checksumOf(data);
  std::vector<std::byte> file(sizeof head + data.size());
  std::memcpy(file.data(), &head, sizeof head);
  if (!data.empty()) std::memcpy(file.data() + sizeof head, data.data(), data.size());
  return file;
}

std::optional<std::span<const std::byte>> unpackPipelineCache(std::span<const std::byte> file) {
  Head head{};
  if (file.size() < sizeof head) return std::nullopt;
  std::memcpy(&head, file.data(), sizeof head);
  const auto data = file.subspan(sizeof head);
  const bool whole = std::memcmp(head.magic, magic, sizeof magic) == 0 && head.length == data.size();
  if (!whole || head.checksum != checksumOf(data)) return std::nullopt;
  return data;
}

VulkanPipelineCache::VulkanPipelineCache(const VulkanContext& context, std::filesystem::path path)
    : context_(context), path_(std::move(path)) {
  const std::vector<std::byte> file = path_.empty() ? std::vector<std::byte>() : readFile(path_);
  const auto stored = unpackPipelineCache(file);
  VkPipelineCacheCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_PIPELINE_CACHE_CREATE_INFO;
  if (stored) {
    saved_.assign(stored->begin(), stored->end());
    info.initialDataSize = saved_.size();
    info.pInitialData = saved_.data();
  }
  VkPipelineCache cache = VK_NULL_HANDLE;
  check(vkCreatePipelineCache(context.device(), &info, nullptr, &cache), "vkCreatePipelineCache");
  cache_ = {context.device(), cache};
}

VulkanPipelineCache::~VulkanPipelineCache() {
  save();
}

std::vector<std::byte> VulkanPipelineCache::data() const {
  std::size_t size = 0;
  if (vkGetPipelineCacheData(context_.device(), cache_.get(), &size, nullptr) != VK_SUCCESS) return {};
  std::vector<std::byte> bytes(size);
  if (vkGetPipelineCacheData(context_.device(), cache_.get(), &size, bytes.data()) != VK_SUCCESS) return {};
  bytes.resize(size);
  return bytes;
}

void VulkanPipelineCache::save() noexcept try {
  if (path_.empty() || context_.lost()) return;
  std::vector<std::byte> bytes = data();
  if (bytes.empty() || bytes == saved_) return;
  if (!writeFile(path_, packPipelineCache(bytes))) {
    NimbraLog::debug("gpu: the pipeline cache can't be written to " + path_.string());
    return;
  }
  saved_ = std::move(bytes);
} catch (const std::exception& error) {
  NimbraLog::debugf("gpu: the pipeline cache was not kept: %s", error.what());
}

}  // namespace veloria::gpu::vulkan
