#include "main/LiveSources.h"

#include <gtest/gtest.h>

#include "Process.h"

namespace veloria {
namespace {

TEST(LiveSources, theStateFileIsFollowedThoughItsFolderCantBeMadeYet) {
  const tests::TemporaryFolder folder;
  const std::string data = folder.write("data", "a file where the folder should be");
  LiveSources sources(
      [&](std::string_view name) { return name.find("DATA") != name.npos ? std::optional(data) : std::nullopt; }, {});
  SceneDriver::Ports ports;
  sources.addTo(ports);
  EXPECT_EQ(ports.agentStateFile, data + "/Veloria/state.json");
}

}  // namespace
}  // namespace veloria
