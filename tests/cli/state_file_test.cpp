#include "cli/StateFile.h"

#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "Process.h"
#include "base/Files.h"
#include "base/MediaClock.h"
#include "base/StrictJson.h"

namespace veloria::cli::tests {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using nlohmann::json;
using testing::HasSubstr;

class StateFileTest : public testing::Test {
 protected:
  /// Sets a0; what went wrong, or the notice.
  std::string change() const {
    const auto notice = file.change([](json& state, double) { state["a0"] = 1; });
    return notice ? *notice : "error: " + notice.error();
  }

  veloria::tests::TemporaryFolder folder;
  fs::path path = folder.file("below/Veloria/state.json");
  fs::path lock = path.string() + ".lock";
  StateFile file{path, 0.1};
};

TEST_F(StateFileTest, ChangesAreReadBackAndKeepTheRest) {
  EXPECT_TRUE((*file.read()).empty());
  ASSERT_EQ(change(), "");
  ASSERT_TRUE(file.change([](json& state, double now) {
    state["b"] = {"text", nullptr};
    EXPECT_NEAR(now, wallTime(), 60);
  }));
  EXPECT_EQ(*file.read(), json({{"a0", 1}, {"b", {"text", nullptr}}}));
  EXPECT_FALSE(file.change([](json& state, double) { state["big"] = std::string(maximumJsonBytes, 'x'); }));
  EXPECT_EQ((*file.read()).size(), 2U) << "it grows no larger than it can be read";
}

TEST_F(StateFileTest, WhatIsNoStateMakesRoom) {
  fs::create_directories(path.parent_path());
  for (const std::string& bytes : {""s, "[1, 2]"s, "{\"busy\": 1"s, "{\"busy\": 1e999}"s, "\xff\xfe"s,
                                   "{\"a\": \"" + std::string(maximumJsonBytes, 'x') + "\"}",
                                   "{\"full\": \"" + std::string(maximumJsonBytes - 20, 'x') + "\"}"}) {
    ASSERT_TRUE(writeFileAtomically(path, bytes));
    EXPECT_EQ(static_cast<bool>(file.read()), bytes.starts_with("{\"full"));
    EXPECT_THAT(change(), testing::AllOf(testing::StartsWith(path.string() + " "), HasSubstr("state.json.rejected")));
    EXPECT_EQ(fs::file_size(path.string() + ".rejected"), bytes.size());
    EXPECT_EQ(*file.read(), json({{"a0", 1}}));
  }
}

TEST_F(StateFileTest, ObstaclesStayAndAreErrors) {
  fs::create_directories(path.parent_path());
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  EXPECT_FALSE(file.read());
  EXPECT_THAT(change(), HasSubstr("state.json: not a regular file"));
  EXPECT_TRUE(fs::is_fifo(path));
  fs::remove(lock);
  ASSERT_EQ(::mkfifo(lock.c_str(), 0600), 0);
  EXPECT_THAT(change(), HasSubstr("state.json.lock: not a regular file"));
}

TEST_F(StateFileTest, WaitsForOthersOnlySoLong) {
  ASSERT_EQ(change(), "");
  const int held = ::open(lock.c_str(), O_RDWR);
  ASSERT_EQ(::flock(held, LOCK_EX), 0);
  EXPECT_THAT(change(), HasSubstr("another program"));
  ::close(held);
  EXPECT_EQ(change(), "");
}

}  // namespace
}  // namespace veloria::cli::tests
