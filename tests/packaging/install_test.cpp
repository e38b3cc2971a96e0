// What `cmake --install` puts into a folder works from there, and is what the desktop expects.

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "Process.h"

namespace veloria::tests {
namespace {

using testing::HasSubstr;

class InstallTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    home = std::make_unique<TemporaryFolder>();
    const ProcessResult result =
        runProcess(VELORIA_CMAKE, {"--install", VELORIA_BUILD_FOLDER, "--prefix", home->file("prefix")});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
  }
  static void TearDownTestSuite() { home.reset(); }

  static std::string installed(const std::string& path) { return home->file("prefix/" + path); }

  /// In the home, which has no file of the build. The program is looked up on the PATH if it has no slash.
  static ProcessResult run(std::vector<std::string> words) {
    return runProcess("/usr/bin/env", words, home->path(),
                      {"DISPLAY=", "WAYLAND_DISPLAY=", "NIMBRA_DEBUG=1", "XDG_CACHE_HOME=" + home->file("cache"),
                       "XDG_RUNTIME_DIR=" + home->path()});
  }
  static void expectSilent(const std::vector<std::string>& words) {
    const ProcessResult result = run(words);
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_EQ(result.output + result.errors, "");
  }

  static inline std::unique_ptr<TemporaryFolder> home;
};

TEST_F(InstallTest, DrawsWithTheInstalledShaderLibraryOnly) {
  const ProcessResult result = run({installed("bin/veloria"), "render", "--size", "160x16", "--seconds", "1", "--fps",
                                    "20", "--gpu", "llvmpipe", "--raw", "-"});
  EXPECT_THAT(result.errors, HasSubstr("library from " + installed("share/veloria/default.spv")));
  ASSERT_EQ(result.output.size(), 20U * 160 * 16 * 4);
  const auto light =
      std::ranges::count_if(result.output, [](char byte) { return static_cast<unsigned char>(byte) > 60; });
  EXPECT_GT(light, static_cast<std::ptrdiff_t>(result.output.size() / 4));
}

TEST_F(InstallTest, EverythingIsInItsPlace) {
  for (const std::string program : {"veloria", "nimbra"}) {
    EXPECT_EQ(run({installed("bin/" + program), "--version"}).output, program + " " VELORIA_VERSION "\n");
    for (const std::string& path :
         {"man/man1/" + program + ".1", "bash-completion/completions/" + program, "zsh/site-functions/_" + program,
          "fish/vendor_completions.d/" + program + ".fish"}) {
      EXPECT_TRUE(std::filesystem::is_regular_file(installed("share/" + path))) << path;
    }
  }
  EXPECT_TRUE(std::filesystem::is_regular_file(installed("share/icons/hicolor/scalable/apps/veloria.svg")));
}

TEST_F(InstallTest, GnomeShellsExtensionsAreWhole) {
  const std::string folder = installed("share/gnome-shell/extensions/");
  const std::string script = folder + "panel-42@veloria.tollmere.com";
  const std::string module = folder + "panel@veloria.tollmere.com";
  for (const std::string& each : {script, module}) {
    const ProcessResult uuid = run(
        {"python3", "-c", "import json, sys; print(json.load(open(sys.argv[1]))['uuid'])", each + "/metadata.json"});
    EXPECT_EQ(folder + uuid.output, each + "\n") << uuid.errors;
    EXPECT_TRUE(std::filesystem::is_regular_file(each + "/stylesheet.css"));
    EXPECT_EQ(run({"grep", "-c", "@[a-z]*@", each + "/extension.js"}).output, "0\n");
  }
  if (run({"sh", "-c", "command -v gjs"}).exitCode != 0) GTEST_SKIP() << "gjs is not here to read the extensions";
  // The shell's own parts, as far as loading needs them.
  std::filesystem::create_directory(home->file("ui"));
  home->write("ui/main.js", "");
  home->write("ui/pointerWatcher.js", "function getPointerWatcher() {}");
  home->write("shell.js", "export class Extension {}; export const panel = 0; export function getPointerWatcher() {}");
  const std::string check = "; for (const each of [x.enable, x.disable]) if (!each) throw new Error('not whole')";
  expectSilent({"sh", "-c", "sed \"s|resource:///org/gnome/shell/.*js'|./shell.js'|\" \"$0\" > extension.js",
                module + "/extension.js"});
  home->write("main.js", "import E from './extension.js'; const x = new E()" + check);
  expectSilent({"gjs", "-m", "main.js"});
  expectSilent(
      {"gjs", "-I", home->path(), "-c",
       "const places = imports.searchPath.unshift('" + script + "'); const x = imports.extension.init()" + check});
}

TEST_F(InstallTest, DesktopEntryMetadataAndServiceAreValid) {
  expectSilent({"desktop-file-validate", installed("share/applications/com.tollmere.Veloria.desktop")});
  EXPECT_EQ(run({"appstreamcli", "validate", "--no-net", installed("share/metainfo/com.tollmere.Veloria.metainfo.xml")})
                .exitCode,
            0);
  if (run({"sh", "-c", "command -v systemd-analyze"}).exitCode != 0) GTEST_SKIP() << "systemd-analyze is not here";
  // A prefix is no folder that systemd looks for programs in.
  const std::string unit = installed("lib/systemd/user/veloria.service");
  expectSilent({"sed", "-i", "s|^ExecStart=veloria|ExecStart=" + installed("bin/veloria") + "|", unit});
  expectSilent({"systemd-analyze", "--user", "--man=no", "verify", unit});
}

}  // namespace
}  // namespace veloria::tests
