#include "settings/WriteBehindStorage.h"

#include <gmock/gmock.h>

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
  bool waitFor(Condition condition, std::chrono::milliseconds longest = 20s) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, longest, condition);
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
    if (!disk_.full) disk_.writes.push_back(std::string(key) + "=" + std::string(bytes));
    disk_.changed.notify_all();
    return !disk_.full;
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
  disk_.stuckOn = "1";
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
  int changes = 0;
  do storage_->write("a", std::to_string(++changes));
  while (!disk_.waitFor([&] { return disk_.writes.size() > 1; }, 2ms) && changes < 9000);
  EXPECT_EQ(disk_.writes.size(), 2U) << "a change that is never the last one";
  EXPECT_GT(changes, 5) << "not each change";
}

TEST_F(WriteBehindStorageTest, WhatCannotBeWrittenStaysAndIsTriedAgain) {
  disk_.full = true;
  storage_->write("a", "1");
  storage_->flush();
  EXPECT_THAT(storage_->read("a"), Optional(std::string("1")));
  disk_.set([&] { disk_.full = false; });
  storage_->write("b", "1");
  EXPECT_TRUE(disk_.waitFor([&] { return disk_.writes.size() == 2; })) << "with the next change";
  storage_->write("b", "2");
  storage_.reset();
  EXPECT_THAT(disk_.writes, ElementsAre("a=1", "b=1", "b=2")) << "at the end at the latest";
}

}  // namespace
}  // namespace veloria::tests
