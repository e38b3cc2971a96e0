#include "cli/StateFile.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <fstream>
#include <functional>
#include <iterator>

#include "Process.h"
#include "base/MediaClock.h"
#include "base/StrictJson.h"
#include "cli/FileLock.h"

namespace veloria::cli {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;

class StateFileTest : public testing::Test {
 protected:
  std::string content() const {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  void put(const std::string& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
  }
  static void setA0(json& state, double) { state["a0"] = 1; }

  tests::TemporaryFolder folder;
  fs::path path = folder.file("below/Veloria/state.json");
  StateFile file{path, 0.1};
};

TEST_F(StateFileTest, ChangesAreReadBackAndKeepTheRest) {
  EXPECT_TRUE((*file.read()).empty());
  EXPECT_FALSE(fs::exists(path.parent_path())) << "reading makes nothing";
  ASSERT_EQ(*file.change(setA0), "");
  double clock = 0;
  ASSERT_EQ(*file.change([&](json& state, double now) {
    state["b"] = {"text", nullptr};
    clock = now;
  }),
            "");
  EXPECT_EQ(*file.read(), json({{"a0", 1}, {"b", {"text", nullptr}}}));
  EXPECT_NEAR(clock, wallTime(), 60);
}

TEST_F(StateFileTest, WhatIsNoStateMakesRoom) {
  for (const std::string& bytes :
       {std::string(), std::string("[1, 2]"), std::string("{\"busy\": 1"), std::string("{\"busy\": 1e999}"),
        std::string("\xff\xfe"), "{\"a\": \"" + std::string(maximumJsonBytes, 'x') + "\"}",
        "{\"full\": \"" + std::string(maximumJsonBytes - 20, 'x') + "\"}"}) {
    put(bytes);
    EXPECT_EQ(static_cast<bool>(file.read()), bytes.starts_with("{\"full"));
    const auto notice = file.change(setA0);
    ASSERT_TRUE(notice) << notice.error();
    EXPECT_THAT(*notice, HasSubstr("state.json.rejected"));
    EXPECT_EQ(notice->find('\n'), std::string::npos);
    EXPECT_EQ(fs::file_size(path.string() + ".rejected"), bytes.size());
    EXPECT_EQ(*file.read(), json({{"a0", 1}}));
  }
}

TEST_F(StateFileTest, WhatIsNoFileStaysAndIsAnError) {
  fs::create_directories(path.parent_path());
  const std::vector<std::function<void()>> obstacles{
      [&] { ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0); },
      [&] { fs::create_directory(path); },
      [&] { fs::create_symlink("/dev/null", path); },
      [&] { fs::create_symlink(path.filename(), path); },
  };
  for (const auto& obstruct : obstacles) {
    obstruct();
    const auto type = fs::symlink_status(path).type();
    EXPECT_FALSE(file.read());
    const auto result = file.change(setA0);
    ASSERT_FALSE(result);
    EXPECT_THAT(result.error(), HasSubstr("state.json: "));
    EXPECT_EQ(fs::symlink_status(path).type(), type);
    fs::remove(path);
  }
}

TEST_F(StateFileTest, LockObstaclesAreErrors) {
  fs::create_directories(path.parent_path());
  const fs::path lock = path.string() + ".lock";
  ASSERT_EQ(::mkfifo(lock.c_str(), 0600), 0);
  EXPECT_THAT(file.change(setA0).error(), HasSubstr("state.json.lock: not a regular file"));
  fs::remove(lock);
  fs::create_directory(lock);
  EXPECT_FALSE(file.change(setA0));
}

TEST_F(StateFileTest, WaitsForOthersOnlySoLong) {
  ASSERT_TRUE(file.change(setA0));
  const std::string before = content();
  {
    const auto held = FileLock::acquire(path.string() + ".lock", 1);
    ASSERT_TRUE(held);
    const auto result = file.change([](json& state, double) { state["b"] = 1; });
    ASSERT_FALSE(result);
    EXPECT_THAT(result.error(), HasSubstr("another program"));
    EXPECT_EQ(content(), before);
  }
  EXPECT_TRUE(file.change(setA0));
}

TEST_F(StateFileTest, ALinkedFileStaysLinked) {
  const fs::path real = folder.file("real.json");
  fs::create_directories(path.parent_path());
  fs::create_symlink(real, path);
  ASSERT_TRUE(file.change(setA0));
  EXPECT_TRUE(fs::is_symlink(path));
  EXPECT_TRUE(fs::is_regular_file(real));
}

TEST_F(StateFileTest, GrowsNoLargerThanItCanBeRead) {
  ASSERT_TRUE(file.change(setA0));
  const std::string before = content();
  const auto result = file.change([](json& state, double) { state["big"] = std::string(maximumJsonBytes, 'x'); });
  ASSERT_FALSE(result);
  EXPECT_EQ(content(), before);
}

TEST_F(StateFileTest, NoFolderIsAnError) {
  folder.write("below", "a file");
  const auto result = file.change(setA0);
  ASSERT_FALSE(result);
  EXPECT_THAT(result.error(), HasSubstr("can't be made"));
}

}  // namespace
}  // namespace veloria::cli
