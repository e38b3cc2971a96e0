#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Environment.h"
#include "ports/SettingsStorage.h"

namespace veloria::tests {

/// What a storage in memory holds, and the keys in the order in which they were written.
struct Memory {
  std::map<std::string, std::string, std::less<>> stored;
  std::vector<std::string> writtenKeys;
};

class MemoryStorage final : public SettingsStorage {
 public:
  explicit MemoryStorage(std::shared_ptr<Memory> memory = std::make_shared<Memory>()) : memory_(std::move(memory)) {}

  std::optional<std::string> read(std::string_view key) override {
    const auto found = memory_->stored.find(key);
    return found != memory_->stored.end() ? std::optional(found->second) : std::nullopt;
  }
  bool write(std::string_view key, std::string_view bytes) override {
    memory_->stored.insert_or_assign(memory_->writtenKeys.emplace_back(key), std::string(bytes));
    return true;
  }

 private:
  std::shared_ptr<Memory> memory_;
};

inline std::optional<std::string> emptyEnvironment(std::string_view) {
  return std::nullopt;
}

}  // namespace veloria::tests
