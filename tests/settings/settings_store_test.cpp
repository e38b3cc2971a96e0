#include "settings/SettingsStore.h"

#include <gmock/gmock.h>

#include <future>
#include <limits>
#include <map>

#include "../support/MemoryStorage.h"
#include "settings/SettingsCodec.h"
#include "settings/SettingsEditor.h"
#include "settings/WriteBehindStorage.h"

namespace veloria::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

class SettingsStoreTest : public testing::Test {
 protected:
  using Variables = std::map<std::string, std::string, std::less<>>;

  SettingsStore makeStore(const Variables& variables = {}) {
    return {std::make_unique<MemoryStorage>(memory_), [variables](std::string_view name) {
              const auto found = variables.find(name);
              return found != variables.end() ? std::optional(found->second) : std::nullopt;
            }};
  }

  static NimbraConfig withExposure(double exposure) {
    NimbraConfig config;
    config.exposure = exposure;
    return config;
  }
  NimbraConfig storedRecord() { return *decodeSettings(memory_->stored.at("NimbraConfig.v1")); }

  std::shared_ptr<Memory> memory_ = std::make_shared<Memory>();
};

TEST_F(SettingsStoreTest, StartsWithWhatIsStoredAndWritesTheWholeRecordOnceForEachRealChange) {
  SettingsStore store = makeStore();
  EXPECT_EQ(store.config(), NimbraConfig());
  store.setConfig(NimbraConfig());
  EXPECT_THAT(memory_->writtenKeys, IsEmpty());
  store.setConfig(withExposure(2));
  store.setConfig(withExposure(2));
  EXPECT_THAT(memory_->writtenKeys, ElementsAre("NimbraConfig.v1"));
  EXPECT_EQ(makeStore().config(), withExposure(2));
  store.setConfig(withExposure(std::numeric_limits<double>::infinity()));
  EXPECT_EQ(storedRecord(), withExposure(2)) << "what can't be encoded stays in memory";
}

TEST_F(SettingsStoreTest, TellsObserversOfEqualRecordsToo) {
  SettingsStore store = makeStore();
  std::vector<double> seen;
  const Subscription token = store.subscribe([&](const NimbraConfig& config) {
    seen.push_back(config.exposure);
    if (config.exposure > 4) store.setConfig(withExposure(4));
  });
  for (int i = 0; i < 2; ++i) store.setConfig(withExposure(2));
  EXPECT_THAT(seen, ElementsAre(1.25, 2, 2));
  store.setConfig(withExposure(9));
  EXPECT_EQ(storedRecord(), withExposure(4)) << "an observer that corrects the record has the last word";
}

TEST_F(SettingsStoreTest, ARecordThatDoesNotDecodeIsPutAsideBeforeItIsOverwritten) {
  memory_->stored["NimbraConfig.v1"] = "{}";
  SettingsStore store = makeStore();
  EXPECT_EQ(store.config(), NimbraConfig());
  EXPECT_THAT(memory_->writtenKeys, IsEmpty()) << "not touched before the next change";
  for (const double exposure : {2, 3}) store.setConfig(withExposure(exposure));
  EXPECT_EQ(memory_->stored["NimbraConfig.v1.rejected"], "{}");
  EXPECT_THAT(memory_->writtenKeys, ElementsAre("NimbraConfig.v1.rejected", "NimbraConfig.v1", "NimbraConfig.v1"));
}

TEST_F(SettingsStoreTest, TheEnvironmentOverridesWhatIsStoredUntilTheNextChangeStoresBoth) {
  const std::pair<Variables, void (*)(NimbraConfig&)> cases[] = {
      {{{"NIMBRA_VISUALIZER", "music"}}, [](NimbraConfig& c) { c.visualizer = Visualizer::music; }},
      {{{"NIMBRA_VISUALIZER", "Music"}}, [](NimbraConfig&) {}},
      {{{"NIMBRA_LAYER", "desktopFull"}}, [](NimbraConfig& c) { c.layerMode = LayerMode::desktopFull; }},
      {{{"NIMBRA_HDR", "1"}}, [](NimbraConfig& c) { c.hdrGlow = true; }},
      {{{"NIMBRA_HDR", "true"}}, [](NimbraConfig& c) { c.hdrGlow = false; }},
      {{{"NIMBRA_SCRIPT", "# \xFF\n"}, {"NIMBRA_VISUALIZER", "music"}},
       [](NimbraConfig& c) {
         c.customScript = "# \xEF\xBF\xBD\n";
         c.visualizer = Visualizer::script;
       }},
  };
  NimbraConfig base;
  for (const bool hdr : {true, false}) {
    base.hdrGlow = hdr;
    memory_->stored["NimbraConfig.v1"] = *encodeSettings(base);
    for (const auto& [variables, edit] : cases) {
      NimbraConfig expected = base;
      edit(expected);
      EXPECT_EQ(makeStore(variables).config(), expected) << testing::PrintToString(variables);
    }
  }
  EXPECT_THAT(memory_->writtenKeys, IsEmpty()) << "overrides are not written back";
  SettingsStore store = makeStore({{"NIMBRA_LAYER", "desktopFull"}});
  base = store.config();
  base.exposure = 2;
  store.setConfig(base);
  EXPECT_EQ(storedRecord().layerMode, LayerMode::desktopFull);
}

TEST_F(SettingsStoreTest, APaletteThatWasPutAsideOutlivesTheProcess) {
  NimbraConfig mine;
  mine.customPalette = Palette{"Mine", {4, {1, 0, 0}}};
  SettingsStore store = makeStore();
  store.setConfig(mine);
  store.keepOwnPalette();
  store.setConfig(NimbraConfig());
  EXPECT_EQ(makeStore().ownPalette(), mine.customPalette);
}

TEST_F(SettingsStoreTest, TheEdgeIsKeptBesideTheRecordAndAnUnknownOneIsRefused) {
  SettingsStore store = makeStore();
  EXPECT_TRUE(store.isNew());
  int seen = 0;
  const Subscription token = store.subscribe([&](const NimbraConfig&) { ++seen; });
  store.setExtra({EdgeChoice::bottom});
  EXPECT_EQ(seen, 2);
  EXPECT_TRUE(store.isNew()) << "the record itself is not written";
  EXPECT_EQ(makeStore().extra().edge, EdgeChoice::bottom);
  for (const char* bytes : {"", "[]", R"({"edge": 1})", R"({"edge": "left"})", R"({"edge": "bottom")"}) {
    memory_->stored["NimbraConfig.v1.extra"] = bytes;
    EXPECT_EQ(makeStore().extra(), ExtraSettings()) << bytes;
  }
  memory_->stored["NimbraConfig.v1"] = "nonsense";
  EXPECT_FALSE(makeStore().isNew());
}

class SettingsEditorTest : public SettingsStoreTest {
 protected:
  void setExposure(double value) {
    editor_.change("exposure", [value](NimbraConfig& c) { c.exposure = value; });
  }
  std::vector<double> undoneExposures() {
    std::vector<double> values;
    for (; editor_.canUndo(); values.push_back(store_.config().exposure)) editor_.undo();
    return values;
  }

  double now_ = 100;
  SettingsStore store_ = makeStore();
  SettingsEditor editor_{store_, [this] { return now_; }};
};

TEST_F(SettingsEditorTest, ChangesOfOneThingWithinASecondAreOneStep) {
  setExposure(2);
  now_ += SettingsEditor::joinSeconds;
  setExposure(3);
  now_ += SettingsEditor::joinSeconds + 0.01;
  setExposure(4);
  editor_.change("other", [](NimbraConfig& c) { c.exposure = 5; });
  EXPECT_THAT(undoneExposures(), ElementsAre(4, 3, 1.25));
  editor_.redo();
  setExposure(4);
  EXPECT_FALSE(editor_.canRedo()) << "a new change ends what could be made again";
  EXPECT_THAT(undoneExposures(), ElementsAre(3, 1.25)) << "nothing joins a step that was undone";
  setExposure(6);
  setExposure(1.25);
  EXPECT_FALSE(editor_.canUndo()) << "back where it was";
}

TEST_F(SettingsEditorTest, UndoAndRedoKeepWhatOthersChangedMeanwhile) {
  setExposure(2);
  NimbraConfig others = store_.config();
  others.saturation = 3;
  store_.setConfig(others);
  editor_.undo();
  EXPECT_EQ(store_.config().saturation, 3);
  EXPECT_EQ(store_.config().exposure, 1.25);
  editor_.redo();
  EXPECT_EQ(store_.config(), others);
}

TEST_F(SettingsEditorTest, WhatIsBesideTheRecordIsUndoneInItsTurn) {
  setExposure(2);
  editor_.changeExtra("edge", {EdgeChoice::bottom});
  setExposure(3);
  for (const auto& [exposure, edge] : {std::pair(2.0, EdgeChoice::bottom), {2.0, EdgeChoice::automatic}}) {
    editor_.undo();
    EXPECT_EQ(store_.config().exposure, exposure);
    EXPECT_EQ(editor_.extra().edge, edge);
  }
  editor_.redo();
  EXPECT_EQ(editor_.extra().edge, EdgeChoice::bottom);
}

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
  do {
    storage_->write("a", std::to_string(++changes));
  } while (!disk_.waitFor([&] { return disk_.writes.size() > 1; }, 2ms) && changes < 9000);
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
