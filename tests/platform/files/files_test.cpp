#include <gmock/gmock.h>

#include <map>

#include "Process.h"
#include "base/StrictJson.h"
#include "platform/linux/files/FileSettingsStorage.h"
#include "platform/posix/files/OnceMark.h"
#include "platform/posix/files/UserFolders.h"
#include "settings/SettingsStore.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using enum fs::perms;

class FileSettingsStorageTest : public testing::Test {
 protected:
  SettingsStore makeStore() {
    return SettingsStore(std::make_unique<FileSettingsStorage>(folder), [](auto) { return std::nullopt; });
  }

  TemporaryFolder home;
  const fs::path folder = home.file("config/Veloria");
};

TEST_F(FileSettingsStorageTest, SettingsLastFromOneRunToTheNext) {
  NimbraConfig config;
  config.exposure = 2.75;
  config.customScript = "set wind 1\n";
  {
    SettingsStore store = makeStore();
    EXPECT_EQ(store.config(), NimbraConfig());
    store.setConfig(config);
  }
  EXPECT_EQ(makeStore().config(), config);
  EXPECT_EQ(fs::status(folder).permissions(), owner_all);
  EXPECT_EQ(fs::status(folder / "NimbraConfig.v1.json").permissions(), owner_read | owner_write);
}

TEST_F(FileSettingsStorageTest, AMistakeInAFileEditedByHandLosesNothing) {
  FileSettingsStorage(folder).write(settingsKey, "{ \"exposure\": 3, \"customScript\": \"a day's work\"");
  SettingsStore store = makeStore();
  EXPECT_EQ(store.config(), NimbraConfig());
  store.setConfig({.enabled = false});
  EXPECT_FALSE(makeStore().config().enabled);
  EXPECT_THAT(FileSettingsStorage(folder).read("NimbraConfig.v1.rejected"),
              testing::Optional(testing::HasSubstr("a day's work")));
}

TEST_F(FileSettingsStorageTest, BadKeysAndHugeFilesReadAsNothing) {
  FileSettingsStorage storage(folder);
  for (const char* key : {"", "../x", "a/b", "/etc/x", ".hidden"}) {
    EXPECT_FALSE(storage.write(key, "bytes")) << key;
    EXPECT_EQ(storage.read(key), std::nullopt) << key;
  }
  storage.write(settingsKey, std::string(maximumJsonBytes + 1, ' '));
  EXPECT_EQ(storage.read(settingsKey), std::nullopt);
  EXPECT_FALSE(FileSettingsStorage("/dev/null/Veloria").write("key", "bytes"));
}

TEST_F(FileSettingsStorageTest, AMarkIsRemembered) {
  EXPECT_FALSE(OnceMark(folder, "told").isSet());
  OnceMark(folder, "told").set();
  EXPECT_TRUE(OnceMark(folder, "told").isSet());
}

TEST(UserFolders, FollowTheRulesOfTheSystem) {
  const auto in = [](std::map<std::string_view, std::string> variables) -> Environment {
    return [variables](std::string_view name) {
      return variables.contains(name) ? std::optional(variables.at(name)) : std::nullopt;
    };
  };
  const auto plain = in({{"HOME", "/home/a"}});
  const auto named = in({{"HOME", "/home/a"},
                         {"XDG_CONFIG_HOME", "/c"},
                         {"XDG_DATA_HOME", "/d"},
                         {"XDG_STATE_HOME", "/s"},
                         {"XDG_CACHE_HOME", "/k"}});
  const auto support = "/home/a/Library/Application Support/Veloria";
  for (const auto& [find, usual, moved, mac, library] : {
           std::tuple{&configFolder, "/home/a/.config/Veloria", "/c/Veloria", macosFolders.config, support},
           {&dataFolder, "/home/a/.local/share/Veloria", "/d/Veloria", macosFolders.data, support},
           {&stateFolder, "/home/a/.local/state/Veloria", "/s/Veloria", macosFolders.state, support},
           {&cacheFolder, "/home/a/.cache/Veloria", "/k/Veloria", macosFolders.cache, "/home/a/Library/Caches/Veloria"},
       }) {
    EXPECT_EQ(find(plain), usual);
    EXPECT_EQ(find(named), moved);
    EXPECT_EQ(folderBy(mac, named), library);
  }
  EXPECT_EQ(configFolder(in({{"HOME", "/home/a"}, {"XDG_CONFIG_HOME", "relative"}})), "/home/a/.config/Veloria");
  EXPECT_TRUE(configFolder(in({})).value_or("").is_absolute()) << "the user database has a home";
}

}  // namespace
}  // namespace veloria::tests
