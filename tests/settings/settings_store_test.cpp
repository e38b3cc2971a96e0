#include "settings/SettingsStore.h"

#include <gmock/gmock.h>

#include <limits>
#include <map>

#include "../support/MemoryStorage.h"
#include "settings/SettingsCodec.h"
#include "settings/SettingsEditor.h"

namespace veloria::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

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

TEST_F(SettingsStoreTest, TellsObserversOfEqualRecordsTooAndBeforeItWrites) {
  SettingsStore store = makeStore();
  std::vector<std::pair<double, std::size_t>> seen;
  const Subscription token = store.subscribe([&](const NimbraConfig& config) {
    EXPECT_EQ(store.config(), config);
    seen.emplace_back(config.exposure, memory_->writtenKeys.size());
    if (config.exposure > 4) store.setConfig(withExposure(4));
  });
  store.setConfig(withExposure(2));
  store.setConfig(withExposure(2));
  EXPECT_THAT(seen, ElementsAre(Pair(1.25, 0U), Pair(2, 0U), Pair(2, 1U)));
  store.setConfig(withExposure(9));
  EXPECT_EQ(storedRecord(), withExposure(4)) << "an observer that corrects the record has the last word";
}

TEST_F(SettingsStoreTest, ARecordThatDoesNotDecodeIsDroppedAndPutAsideBeforeItIsOverwritten) {
  const std::string bytes = "{}";
  memory_->stored["NimbraConfig.v1"] = bytes;
  SettingsStore store = makeStore();
  EXPECT_EQ(store.config(), NimbraConfig());
  EXPECT_THAT(memory_->stored, ElementsAre(Pair("NimbraConfig.v1", bytes))) << "not touched before the next change";
  for (const double exposure : {2, 3}) store.setConfig(withExposure(exposure));
  EXPECT_EQ(memory_->stored["NimbraConfig.v1.rejected"], bytes);
  EXPECT_THAT(memory_->writtenKeys, ElementsAre("NimbraConfig.v1.rejected", "NimbraConfig.v1", "NimbraConfig.v1"));
}

TEST_F(SettingsStoreTest, TheEnvironmentOverridesWhatIsStoredUntilTheNextChangeStoresBoth) {
  struct Case {
    Variables variables;
    void (*edit)(NimbraConfig&);
  };
  const Case cases[] = {
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
    for (const Case& c : cases) {
      NimbraConfig expected = base;
      c.edit(expected);
      EXPECT_EQ(makeStore(c.variables).config(), expected) << testing::PrintToString(c.variables);
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
  memory_->stored["NimbraConfig.v1.ownPalette"] = "{";
  EXPECT_EQ(makeStore().ownPalette(), std::nullopt);
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
  NimbraConfig expected;
  expected.saturation = 3;
  EXPECT_EQ(store_.config(), expected);
  editor_.redo();
  EXPECT_EQ(store_.config(), others);
}

TEST_F(SettingsEditorTest, KeepsAHundredSteps) {
  for (int i = 1; i <= 120; ++i, now_ += 2) setExposure(2 + i);
  EXPECT_EQ(undoneExposures().size(), SettingsEditor::maximumSteps);
  EXPECT_EQ(store_.config().exposure, 22);
}

}  // namespace
}  // namespace veloria::tests
