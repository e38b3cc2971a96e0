#include <gmock/gmock.h>

#include <fstream>
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
  void put(const std::string& bytes) {
    fs::create_directories(folder);
    std::ofstream(file, std::ios::binary) << bytes;
  }

  SettingsStore makeStore() {
    return SettingsStore(std::make_unique<FileSettingsStorage>(folder), [](auto) { return std::nullopt; });
  }

  TemporaryFolder home;
  fs::path folder = home.file("config/Veloria");
  fs::path file = folder / "NimbraConfig.v1.json";
};

TEST_F(FileSettingsStorageTest, SettingsLastFromOneRunToTheNext) {
  NimbraConfig config;
  config.exposure = 2.75;
  config.customScript = "set wind 1\n";
  {
    SettingsStore store = makeStore();
    EXPECT_EQ(store.config(), NimbraConfig());
    EXPECT_FALSE(fs::exists(folder.parent_path())) << "reading makes nothing";
    store.setConfig(config);
  }
  EXPECT_EQ(makeStore().config(), config);
  EXPECT_EQ(fs::status(folder.parent_path()).permissions(), owner_all);
  EXPECT_EQ(fs::status(folder).permissions(), owner_all);
  EXPECT_EQ(fs::status(file).permissions(), owner_read | owner_write);
}

TEST_F(FileSettingsStorageTest, AMistakeInAFileEditedByHandLosesNothing) {
  put("{ \"exposure\": 3, \"customScript\": \"a day's work\"");
  SettingsStore store = makeStore();
  EXPECT_EQ(store.config(), NimbraConfig());
  NimbraConfig changed;
  changed.enabled = false;
  store.setConfig(changed);
  EXPECT_EQ(makeStore().config(), changed);
  EXPECT_THAT(FileSettingsStorage(folder).read("NimbraConfig.v1.rejected"),
              testing::Optional(testing::HasSubstr("a day's work")));
}

TEST_F(FileSettingsStorageTest, BadFilesFoldersAndKeysReadAsNothing) {
  using namespace std::string_view_literals;
  FileSettingsStorage storage(folder);
  for (const std::string_view key : {""sv, "../x"sv, "a/b"sv, "/etc/x"sv, ".hidden"sv, "a\0b"sv}) {
    EXPECT_FALSE(storage.write(key, "bytes")) << key;
    EXPECT_EQ(storage.read(key), std::nullopt) << key;
  }
  EXPECT_FALSE(fs::exists(folder));
  fs::create_directories(file);
  EXPECT_EQ(storage.read(settingsKey), std::nullopt);
  fs::remove(file);
  put(std::string(maximumJsonBytes + 1, ' '));
  EXPECT_EQ(storage.read(settingsKey), std::nullopt);
  home.write("file", "not a folder");
  for (const fs::path& nowhere : {fs::path(home.file("file/Veloria")), fs::path()}) {
    FileSettingsStorage none(nowhere);
    EXPECT_FALSE(none.write("key", "bytes")) << nowhere;
    EXPECT_EQ(none.read("key"), std::nullopt) << nowhere;
  }
}

TEST_F(FileSettingsStorageTest, AMarkIsRemembered) {
  const OnceMark mark(folder, "told");
  EXPECT_FALSE(mark.isSet());
  mark.set();
  mark.set();
  EXPECT_TRUE(OnceMark(folder, "told").isSet());
  EXPECT_FALSE(OnceMark(folder, "another").isSet());
  for (const std::optional<fs::path>& nowhere : {std::optional<fs::path>(), std::optional<fs::path>("/dev/null/x")}) {
    OnceMark(nowhere, "told").set();
    EXPECT_FALSE(OnceMark(nowhere, "told").isSet());
  }
}

TEST(UserFolders, FollowTheRulesOfTheSystem) {
  const auto in = [](std::map<std::string, std::string, std::less<>> variables) -> Environment {
    return [variables](std::string_view name) -> std::optional<std::string> {
      const auto found = variables.find(name);
      return found == variables.end() ? std::nullopt : std::optional(found->second);
    };
  };
  const auto plain = in({{"HOME", "/home/a"}});
  const auto named = in({{"HOME", "/home/a"},
                         {"XDG_CONFIG_HOME", "/c"},
                         {"XDG_DATA_HOME", "/d"},
                         {"XDG_STATE_HOME", "/s"},
                         {"XDG_CACHE_HOME", "/k"}});
  for (const auto& [find, mac, usual, moved] : {
           std::tuple{&configFolder, macosFolders.config, "/home/a/.config/Veloria", "/c/Veloria"},
           {&dataFolder, macosFolders.data, "/home/a/.local/share/Veloria", "/d/Veloria"},
           {&stateFolder, macosFolders.state, "/home/a/.local/state/Veloria", "/s/Veloria"},
           {&cacheFolder, macosFolders.cache, "/home/a/.cache/Veloria", "/k/Veloria"},
       }) {
    EXPECT_EQ(find(plain), usual);
    EXPECT_EQ(find(named), moved);
    const auto library =
        find == &cacheFolder ? "/home/a/Library/Caches/Veloria" : "/home/a/Library/Application Support/Veloria";
    EXPECT_EQ(folderBy(mac, named), library);
  }
  for (const char* ignored : {"", "relative", "./c", "~/c"}) {
    EXPECT_EQ(configFolder(in({{"HOME", "/home/a"}, {"XDG_CONFIG_HOME", ignored}})), "/home/a/.config/Veloria");
  }
  EXPECT_EQ(configFolder(in({{"HOME", "relative"}})), configFolder(in({})));
  EXPECT_TRUE(configFolder(in({})).value_or("").is_absolute()) << "the user database has a home";
}

}  // namespace
}  // namespace veloria::tests
