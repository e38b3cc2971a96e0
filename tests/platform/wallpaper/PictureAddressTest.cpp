#include "platform/linux/wallpaper/PictureFinder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace veloria {
namespace {

TEST(PictureAddress, LeadsToFilesOfThisMachineOnly) {
  struct Case {
    std::string address;
    std::optional<std::filesystem::path> path;
  };
  const std::vector<Case> cases{
      {"/a/b.png", "/a/b.png"},
      {"/a%20b.png", "/a%20b.png"},
      {"file:///a%20b%C3%A9.png", "/a b\u00e9.png"},
      {"file://localhost/a.png", "/a.png"},
      {"file:/a.png", "/a.png"},
      {"file:///a?b#c.png", "/a?b#c.png"},
      {"file:///a%00b.png", std::nullopt},
      {"file://server/a.png", std::nullopt},
      {"file://", std::nullopt},
      {"file:", std::nullopt},
      {"file:a.png", std::nullopt},
      {"~/a.png", "/home/u/a.png"},
      {"$HOME/a.png", "/home/u/a.png"},
      {"file://$HOME/a%20b.png", "/home/u/a b.png"},
      {"~//etc/a.png", "/home/u/etc/a.png"},
      {"~other/a.png", std::nullopt},
      {"a.png", std::nullopt},
      {"../a.png", std::nullopt},
      {"https://example.invalid/a.png", std::nullopt},
      {"", std::nullopt},
      {std::string("/a\0b", 4), std::nullopt},
      {"/" + std::string(5000, 'a'), std::nullopt},
  };
  for (const Case& c : cases) EXPECT_EQ(localPath(c.address, "/home/u"), c.path) << c.address.substr(0, 60);
  EXPECT_EQ(localPath("~/a.png", ""), std::nullopt);
}

}  // namespace
}  // namespace veloria
