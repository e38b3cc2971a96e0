#include "settings/WriteBehindStorage.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <future>

namespace veloria::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::Optional;

/// A disk that can be slow and full; outlives the storage in front of it.
struct Disk {
  template <typename Edit>
  void set(Edit edit) {
    const std::lock_guard lock(mutex);
    edit();
    changed.notify_all();
  }
  template <typename Condition>
  bool waitFor(Condition condition) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, 20s, condition);
  }

  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::string> writes;
  int asked = 0;
  std::string stuckOn;
  bool full = false;
};

class DiskStorage final : public SettingsStorage {
 public:
  explicit DiskStorage(Disk& disk) : disk_(disk) {}
  std::optional<std::string> read(std::string_view key) override { return "old " + std::string(key); }
  bool write(std::string_view key, std::string_view bytes) override {
    std::unique_lock lock(disk_.mutex);
    ++disk_.asked;
    disk_.changed.notify_all();
    disk_.changed.wait(lock, [&] { return disk_.stuckOn != bytes; });
    if (disk_.full) return false;
    disk_.writes.push_back(std::string(key) + "=" + std::string(bytes));
    disk_.changed.notify_all();
    return true;
  }

 private:
  Disk& disk_;
};

class WriteBehindStorageTest : public testing::Test {
 protected:
  Disk disk_;
  std::unique_ptr<SettingsStorage> storage_ =
      std::make_unique<WriteBehindStorage>(std::make_unique<DiskStorage>(disk_));
};

TEST_F(WriteBehindStorageTest, WhatIsSetIsReadAtOnceAndOnlyFlushWaitsForTheDisk) {
  disk_.set([&] { disk_.stuckOn = "1"; });
  EXPECT_THAT(storage_->read("a"), Optional(std::string("old a")));
  storage_->write("a", "1");
  ASSERT_TRUE(disk_.waitFor([&] { return disk_.asked == 1; }));
  storage_->write("a", "2");
  EXPECT_THAT(storage_->read("a"), Optional(std::string("2")));
  auto flushed = std::async(std::launch::async, [&] { storage_->flush(); });
  EXPECT_EQ(flushed.wait_for(100ms), std::future_status::timeout);
  disk_.set([&] { disk_.stuckOn.clear(); });
  flushed.get();
  EXPECT_THAT(disk_.writes, ElementsAre("a=1", "a=2")) << "never the older one last";
}

TEST_F(WriteBehindStorageTest, ARunOfChangesIsOneWriteAndALongOneIsWrittenOnTheWay) {
  for (int value = 0; value <= 100; ++value) storage_->write("a", std::to_string(value));
  ASSERT_TRUE(disk_.waitFor([&] { return !disk_.writes.empty(); }));
  EXPECT_THAT(disk_.writes, ElementsAre("a=100"));
  const auto start = std::chrono::steady_clock::now();
  const auto written = [&] {
    const std::lock_guard lock(disk_.mutex);
    return disk_.writes.size();
  };
  for (int value = 0; written() < 2 && std::chrono::steady_clock::now() - start < 20s; ++value) {
    storage_->write("a", std::to_string(value));
    std::this_thread::sleep_for(2ms);
  }
  EXPECT_EQ(written(), 2U) << "a change that is never the last one";
  EXPECT_GT(std::chrono::steady_clock::now() - start, 0.7s) << "no more than once a second";
}

TEST_F(WriteBehindStorageTest, WhatCannotBeWrittenIsToldOnceStaysAndIsTriedAgain) {
  testing::internal::CaptureStderr();
  disk_.set([&] { disk_.full = true; });
  for (const char* bytes : {"1", "2", "3"}) {
    storage_->write("a", bytes);
    storage_->flush();
  }
  const std::string told = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::ranges::count(told, '\n'), 1) << told;
  EXPECT_THAT(told, testing::HasSubstr("could not be stored"));
  EXPECT_THAT(storage_->read("a"), Optional(std::string("3")));
  disk_.set([&] { disk_.full = false; });
  storage_->write("b", "1");
  EXPECT_TRUE(disk_.waitFor([&] { return disk_.writes.size() == 2; })) << "with the next change";
  disk_.set([&] { disk_.full = true; });
  storage_->write("b", "2");
  storage_->write("a", "4");
  storage_->write("b", "3");
  storage_->flush();
  disk_.set([&] { disk_.full = false; });
  storage_.reset();
  EXPECT_THAT(disk_.writes, ElementsAre("a=3", "b=1", "a=4", "b=3")) << "at the end, in the order of the keys";
}

}  // namespace
}  // namespace veloria::tests
