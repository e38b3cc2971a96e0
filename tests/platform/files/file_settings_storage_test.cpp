#include "platform/linux/files/FileSettingsStorage.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <map>

#include "base/StrictJson.h"
#include "platform/posix/files/FolderRules.h"
#include "platform/posix/files/OnceMark.h"
#include "platform/posix/files/UserFolders.h"
#include "settings/SettingsStore.h"

namespace veloria {
namespace {

namespace fs = std::filesystem;

class FileSettingsStorageTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "veloria-settings-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    home = pattern;
    folder = home / "config" / "Veloria";
    file = folder / "NimbraConfig.v1.json";
  }
  void TearDown() override { fs::remove_all(home); }

  void put(const std::string& bytes) {
    fs::create_directories(folder);
    std::ofstream(file, std::ios::binary) << bytes;
  }

  std::optional<std::string> stored() { return FileSettingsStorage(folder).read(settingsKey); }

  SettingsStore makeStore() {
    return SettingsStore(std::make_unique<FileSettingsStorage>(folder), [](auto) { return std::nullopt; });
  }

  static fs::perms modeOf(const fs::path& path) { return fs::status(path).permissions(); }

  fs::path home;
  fs::path folder;
  fs::path file;
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
  EXPECT_EQ(modeOf(folder.parent_path()), fs::perms::owner_all);
  EXPECT_EQ(modeOf(folder), fs::perms::owner_all);
  EXPECT_EQ(modeOf(file), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(FileSettingsStorageTest, ASlipInAFileEditedByHandCostsNothing) {
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

TEST_F(FileSettingsStorageTest, HostileFilesReadAsNothing) {
  fs::create_directories(file);
  EXPECT_EQ(stored(), std::nullopt);
  fs::remove(file);
  put(std::string(maximumJsonBytes + 1, ' '));
  EXPECT_EQ(stored(), std::nullopt);
}

TEST_F(FileSettingsStorageTest, AFolderThatCannotBeMadeFailsTheWriteOnly) {
  std::ofstream(home / "config") << "a file";
  FileSettingsStorage storage(folder);
  EXPECT_FALSE(storage.write("key", "bytes"));
  EXPECT_EQ(storage.read("key"), std::nullopt);
  FileSettingsStorage nowhere{fs::path()};
  EXPECT_FALSE(nowhere.write("key", "bytes"));
  EXPECT_EQ(nowhere.read("key"), std::nullopt);
}

TEST_F(FileSettingsStorageTest, AKeyNeverLeavesTheFolder) {
  FileSettingsStorage storage(folder);
  using namespace std::string_view_literals;
  for (const std::string_view key : {""sv, "../x"sv, "a/b"sv, "/etc/x"sv, ".hidden"sv, "a\0b"sv}) {
    EXPECT_FALSE(storage.write(key, "bytes")) << key;
    EXPECT_EQ(storage.read(key), std::nullopt) << key;
  }
  EXPECT_FALSE(fs::exists(folder));
}

TEST(UserFoldersTest, FollowTheBaseDirectoryRules) {
  const auto in = [](std::map<std::string, std::string, std::less<>> variables) -> Environment {
    return [variables](std::string_view name) -> std::optional<std::string> {
      const auto found = variables.find(name);
      if (found == variables.end()) return std::nullopt;
      return found->second;
    };
  };
  const Environment full = in({{"HOME", "/home/a"}, {"XDG_CONFIG_HOME", "/c"}, {"XDG_DATA_HOME", "/d"}});
  EXPECT_EQ(configFolder(full), "/c/Veloria");
  EXPECT_EQ(dataFolder(full), "/d/Veloria");
  EXPECT_EQ(cacheFolder(full), "/home/a/.cache/Veloria");
  EXPECT_EQ(stateFolder(full), "/home/a/.local/state/Veloria");
  EXPECT_EQ(stateFolder(in({{"HOME", "/home/a"}, {"XDG_STATE_HOME", "/s"}})), "/s/Veloria");
  for (const char* ignored : {"", "relative", "./c", "~/c"}) {
    EXPECT_EQ(configFolder(in({{"HOME", "/home/a"}, {"XDG_CONFIG_HOME", ignored}})), "/home/a/.config/Veloria");
  }
  EXPECT_EQ(dataFolder(in({{"HOME", "/home/a"}})), "/home/a/.local/share/Veloria");
  EXPECT_EQ(configFolder(in({{"HOME", "relative"}})), configFolder(in({})));
  EXPECT_TRUE(configFolder(in({})).value_or("").is_absolute()) << "the user database knows a home";
}

TEST(UserFoldersTest, AMacHasOthersAndNoVariablesForThem) {
  const Environment environment = [](std::string_view name) -> std::optional<std::string> {
    return name == "HOME" ? "/Users/a" : "/elsewhere";
  };
  for (const FolderRule& rule : {macosFolders.config, macosFolders.data, macosFolders.state}) {
    EXPECT_EQ(folderBy(rule, environment), "/Users/a/Library/Application Support/Veloria");
  }
  EXPECT_EQ(folderBy(macosFolders.cache, environment), "/Users/a/Library/Caches/Veloria");
}

TEST_F(FileSettingsStorageTest, AMarkIsRememberedWhereItCanBe) {
  EXPECT_FALSE(OnceMark(folder, "told").isSet());
  OnceMark(folder, "told").set();
  OnceMark(folder, "told").set();
  EXPECT_TRUE(OnceMark(folder, "told").isSet());
  EXPECT_FALSE(OnceMark(folder, "another").isSet());
  for (const std::optional<fs::path>& nowhere : {std::optional<fs::path>(), std::optional<fs::path>("/dev/null/x")}) {
    OnceMark(nowhere, "told").set();
    EXPECT_FALSE(OnceMark(nowhere, "told").isSet());
  }
}

}  // namespace
}  // namespace veloria
