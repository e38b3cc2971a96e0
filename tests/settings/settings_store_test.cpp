#include "settings/SettingsStore.h"

#include <gmock/gmock.h>

#include <limits>
#include <map>
#include <memory>
#include <stdexcept>
#include <vector>

#include "settings/SettingsCodec.h"

namespace veloria {
namespace {

using testing::ElementsAre;
using testing::Pair;

/// What a storage in memory holds and was asked; outlives the store that owns the storage.
struct Memory {
  std::map<std::string, std::string, std::less<>> stored;
  std::vector<std::string> writtenKeys;
};

class MemoryStorage : public SettingsStorage {
 public:
  explicit MemoryStorage(Memory& memory) : memory_(memory) {}
  std::optional<std::string> read(std::string_view key) override {
    const auto found = memory_.stored.find(key);
    if (found == memory_.stored.end()) return std::nullopt;
    return found->second;
  }
  bool write(std::string_view key, std::string_view bytes) override {
    memory_.writtenKeys.emplace_back(key);
    memory_.stored.insert_or_assign(std::string(key), std::string(bytes));
    return true;
  }

 private:
  Memory& memory_;
};

class SettingsStoreTest : public testing::Test {
 protected:
  using Variables = std::map<std::string, std::string, std::less<>>;

  SettingsStore makeStore(Variables variables = {}) {
    return SettingsStore(std::make_unique<MemoryStorage>(memory),
                         [variables](std::string_view name) -> std::optional<std::string> {
                           const auto found = variables.find(name);
                           if (found == variables.end()) return std::nullopt;
                           return found->second;
                         });
  }

  void storeRecord(const NimbraConfig& config) { memory.stored["NimbraConfig.v1"] = *encodeSettings(config); }

  NimbraConfig storedRecord() { return *decodeSettings(memory.stored.at("NimbraConfig.v1")); }

  static NimbraConfig withExposure(double exposure) {
    NimbraConfig config;
    config.exposure = exposure;
    return config;
  }

  Memory memory;
};

TEST_F(SettingsStoreTest, StartsWithTheDefaultsAndWritesNothing) {
  const SettingsStore store = makeStore();
  EXPECT_EQ(store.config(), NimbraConfig());
  EXPECT_THAT(memory.writtenKeys, testing::IsEmpty());
}

TEST_F(SettingsStoreTest, StartsWithWhatIsStored) {
  storeRecord(withExposure(3));
  EXPECT_EQ(makeStore().config(), withExposure(3));
}

TEST_F(SettingsStoreTest, WritesTheWholeRecordOnceForEachRealChange) {
  SettingsStore store = makeStore();
  store.setConfig(NimbraConfig());
  EXPECT_THAT(memory.writtenKeys, testing::IsEmpty());
  store.setConfig(withExposure(2));
  store.setConfig(withExposure(2));
  EXPECT_THAT(memory.writtenKeys, ElementsAre("NimbraConfig.v1"));
  EXPECT_EQ(storedRecord(), withExposure(2));
}

TEST_F(SettingsStoreTest, TellsObserversOfEqualRecordsTooAndBeforeItWrites) {
  SettingsStore store = makeStore();
  std::vector<std::pair<double, std::size_t>> seen;
  const Subscription token = store.subscribe([&](const NimbraConfig& config) {
    EXPECT_EQ(store.config(), config);
    seen.emplace_back(config.exposure, memory.writtenKeys.size());
  });
  store.setConfig(withExposure(2));
  store.setConfig(withExposure(2));
  EXPECT_THAT(seen, ElementsAre(Pair(1.25, 0U), Pair(2, 0U), Pair(2, 1U)));
}

TEST_F(SettingsStoreTest, AnObserverThatCorrectsTheRecordHasTheLastWord) {
  SettingsStore store = makeStore();
  const Subscription token = store.subscribe([&](const NimbraConfig& config) {
    if (config.exposure > 4) store.setConfig(withExposure(4));
  });
  store.setConfig(withExposure(9));
  EXPECT_EQ(store.config(), withExposure(4));
  EXPECT_EQ(storedRecord(), withExposure(4));
}

TEST_F(SettingsStoreTest, ARecordThatDoesNotDecodeIsDroppedAsAWhole) {
  std::string bytes = *encodeSettings(withExposure(3));
  bytes.replace(bytes.find("desktopStrip"), 12, "desktopstrip");
  memory.stored["NimbraConfig.v1"] = bytes;
  const SettingsStore store = makeStore();
  EXPECT_EQ(store.config(), NimbraConfig());
  EXPECT_THAT(memory.stored, ElementsAre(Pair("NimbraConfig.v1", bytes))) << "not touched before the next change";
}

TEST_F(SettingsStoreTest, WhatDidNotDecodeIsPutAsideWhenItIsOverwritten) {
  memory.stored["NimbraConfig.v1"] = "{\"exposure\": 3,}";
  SettingsStore store = makeStore();
  store.setConfig(withExposure(2));
  store.setConfig(withExposure(3));
  EXPECT_EQ(storedRecord(), withExposure(3));
  EXPECT_EQ(memory.stored["NimbraConfig.v1.rejected"], "{\"exposure\": 3,}");
  EXPECT_THAT(memory.writtenKeys, ElementsAre("NimbraConfig.v1.rejected", "NimbraConfig.v1", "NimbraConfig.v1"));
}

TEST_F(SettingsStoreTest, WhatCannotBeEncodedStaysInMemoryAndTheOldRecordStaysStored) {
  SettingsStore store = makeStore();
  store.setConfig(withExposure(2));
  store.setConfig(withExposure(std::numeric_limits<double>::infinity()));
  EXPECT_EQ(store.config().exposure, std::numeric_limits<double>::infinity());
  EXPECT_EQ(storedRecord(), withExposure(2));
}

TEST_F(SettingsStoreTest, TheEnvironmentOverridesWhatIsStored) {
  struct Case {
    Variables variables;
    void (*edit)(NimbraConfig&);
  };
  const std::vector<Case> cases{
      {{{"NIMBRA_VISUALIZER", "music"}}, [](NimbraConfig& c) { c.visualizer = Visualizer::music; }},
      {{{"NIMBRA_VISUALIZER", "Music"}}, [](NimbraConfig&) {}},
      {{{"NIMBRA_LAYER", "desktopFull"}}, [](NimbraConfig& c) { c.layerMode = LayerMode::desktopFull; }},
      {{{"NIMBRA_HDR", "1"}}, [](NimbraConfig& c) { c.hdrGlow = true; }},
      {{{"NIMBRA_HDR", "true"}}, [](NimbraConfig& c) { c.hdrGlow = false; }},
      {{{"NIMBRA_HDR", ""}}, [](NimbraConfig& c) { c.hdrGlow = false; }},
      {{{"NIMBRA_SCRIPT", "set wind 1"}, {"NIMBRA_VISUALIZER", "music"}},
       [](NimbraConfig& c) {
         c.customScript = "set wind 1";
         c.visualizer = Visualizer::script;
       }},
      {{{"NIMBRA_SCRIPT", ""}}, [](NimbraConfig& c) { c.visualizer = Visualizer::script; }},
      {{{"NIMBRA_SCRIPT", "# \xFF\n"}},
       [](NimbraConfig& c) {
         c.customScript = "# \xEF\xBF\xBD\n";
         c.visualizer = Visualizer::script;
       }},
  };
  for (const bool hdr : {true, false}) {
    NimbraConfig base = withExposure(3);
    base.hdrGlow = hdr;
    for (const Case& c : cases) {
      storeRecord(base);
      NimbraConfig expected = base;
      c.edit(expected);
      EXPECT_EQ(makeStore(c.variables).config(), expected) << testing::PrintToString(c.variables);
    }
  }
  EXPECT_THAT(memory.writtenKeys, testing::IsEmpty()) << "overrides are not written back";
}

TEST_F(SettingsStoreTest, ALaterChangeStoresTheOverridesToo) {
  SettingsStore store = makeStore({{"NIMBRA_LAYER", "desktopFull"}});
  NimbraConfig changed = store.config();
  changed.exposure = 2;
  store.setConfig(changed);
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
  memory.stored["NimbraConfig.v1.ownPalette"] = "{";
  EXPECT_EQ(makeStore().ownPalette(), std::nullopt);
}

TEST_F(SettingsStoreTest, TheSharedOneIsMadeOnce) {
  EXPECT_THROW(SettingsStore::shared(), std::logic_error);
  static Memory lasting;  // as long as the shared store
  lasting.stored["NimbraConfig.v1"] = *encodeSettings(withExposure(3));
  const auto make = [] {
    return &SettingsStore::makeShared(std::make_unique<MemoryStorage>(lasting), [](auto) { return std::nullopt; });
  };
  EXPECT_EQ(make()->config(), withExposure(3));
  EXPECT_EQ(SettingsStore::shared().config(), withExposure(3));
  EXPECT_THROW(make(), std::logic_error);
}

}  // namespace
}  // namespace veloria
