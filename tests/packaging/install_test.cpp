// What `cmake --install` puts into a folder works from there, and is what the desktop expects.

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "Process.h"

namespace veloria::tests {
namespace {

using testing::HasSubstr;

class InstallTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    home = std::make_unique<TemporaryFolder>();
    const ProcessResult result = runProcess(VELORIA_CMAKE, {"--install", VELORIA_BUILD_FOLDER, "--prefix", prefix()});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
  }
  static void TearDownTestSuite() { home.reset(); }

  static std::string prefix() { return home->file("prefix"); }
  static std::string installed(const std::string& path) { return prefix() + "/" + path; }

  /// In the home, which has no file of the build.
  static ProcessResult run(const std::string& program, const std::vector<std::string>& arguments) {
    return runProcess(program, arguments, home->path(),
                      {"DISPLAY=", "WAYLAND_DISPLAY=", "NIMBRA_DEBUG=1", "XDG_CACHE_HOME=" + home->file("cache"),
                       "XDG_RUNTIME_DIR=" + home->path()});
  }
  static ProcessResult tool(std::vector<std::string> words) { return run("/usr/bin/env", words); }

 private:
  static inline std::unique_ptr<TemporaryFolder> home;
};

TEST_F(InstallTest, ProgramsRunFromThere) {
  EXPECT_EQ(run(installed("bin/veloria"), {"--version"}).output, "veloria " VELORIA_VERSION "\n");
  EXPECT_EQ(run(installed("bin/nimbra"), {"--version"}).output, "nimbra " VELORIA_VERSION "\n");
}

TEST_F(InstallTest, DrawsWithTheInstalledShaderLibrary) {
  const ProcessResult result =
      run(installed("bin/veloria"), {"render", "--size", "160x16", "--seconds", "1", "--fps", "20", "--raw", "-"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_THAT(result.errors, HasSubstr("library from " + installed("share/veloria/default.spv")));
  ASSERT_EQ(result.output.size(), 20U * 160 * 16 * 4);
  const auto light = std::count_if(result.output.begin(), result.output.end(),
                                   [](char byte) { return static_cast<unsigned char>(byte) > 60; });
  EXPECT_GT(light, static_cast<std::ptrdiff_t>(result.output.size() / 4));
}

// Else the test above would prove nothing.
TEST_F(InstallTest, SaysSoWithoutTheShaderLibrary) {
  const std::string library = installed("share/veloria/default.spv");
  std::filesystem::rename(library, library + ".away");
  const ProcessResult result = run(installed("bin/veloria"), {"render", "--seconds", "0.1", "--raw", "-"});
  std::filesystem::rename(library + ".away", library);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, HasSubstr("default.spv not found"));
}

TEST_F(InstallTest, EverythingIsInItsPlace) {
  for (const char* path : {
           "share/man/man1/veloria.1",
           "share/man/man1/nimbra.1",
           "share/bash-completion/completions/veloria",
           "share/bash-completion/completions/nimbra",
           "share/zsh/site-functions/_veloria",
           "share/zsh/site-functions/_nimbra",
           "share/fish/vendor_completions.d/veloria.fish",
           "share/fish/vendor_completions.d/nimbra.fish",
           "share/icons/hicolor/scalable/apps/veloria.svg",
           "share/icons/hicolor/symbolic/apps/veloria-symbolic.svg",
           "share/icons/hicolor/48x48/apps/veloria.png",
           "share/icons/hicolor/128x128/apps/veloria.png",
           "share/icons/hicolor/256x256/apps/veloria.png",
       }) {
    EXPECT_TRUE(std::filesystem::is_regular_file(installed(path))) << path;
  }
}

TEST_F(InstallTest, DesktopEntryAndMetadataAreValid) {
  const ProcessResult entry =
      tool({"desktop-file-validate", installed("share/applications/com.tollmere.Veloria.desktop")});
  EXPECT_EQ(entry.exitCode, 0);
  EXPECT_EQ(entry.output + entry.errors, "");
  const ProcessResult metadata =
      tool({"appstreamcli", "validate", "--no-net", installed("share/metainfo/com.tollmere.Veloria.metainfo.xml")});
  EXPECT_EQ(metadata.exitCode, 0) << metadata.output;
}

TEST_F(InstallTest, ServiceIsValid) {
  if (tool({"sh", "-c", "command -v systemd-analyze"}).exitCode != 0) GTEST_SKIP() << "systemd-analyze is not here";
  // A prefix is no folder that systemd looks for programs in.
  std::ostringstream unit;
  unit << std::ifstream(installed("lib/systemd/user/veloria.service")).rdbuf();
  std::string text = unit.str();
  const std::string start = "ExecStart=veloria";
  ASSERT_NE(text.find(start), std::string::npos);
  text.replace(text.find(start), start.size(), "ExecStart=" + installed("bin/veloria"));
  const TemporaryFolder folder;
  const ProcessResult result =
      tool({"systemd-analyze", "--user", "--man=no", "verify", folder.write("veloria.service", text)});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output + result.errors, "");
}

}  // namespace
}  // namespace veloria::tests
