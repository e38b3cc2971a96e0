// The program as a whole, run as a user runs it, without a display.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "Process.h"

namespace veloria::tests {
namespace {

/// Runs the program with the validation layer on, which writes to standard error.
ProcessResult veloria(const std::vector<std::string>& arguments, const std::string& folder = {},
                      const char* validation = "VELORIA_VALIDATION=1") {
  return runProcess(VELORIA_BINARY, arguments, folder, {"DISPLAY=", "WAYLAND_DISPLAY=", validation});
}

/// With the CPU, unless `more` says otherwise.
std::string rawFrames(std::vector<std::string> more) {
  std::vector<std::string> arguments{"render", "--gpu", "cpu", "--size", "320x16", "--seconds",
                                     "0.5",    "--fps", "20",  "--raw",  "-"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  const ProcessResult result = veloria(arguments);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output.size(), 10U * 320 * 16 * 4);
  return result.output;
}

double meanDifference(const std::string& a, const std::string& b) {
  double sum = 0;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    sum += std::abs(static_cast<int>(static_cast<unsigned char>(a[i])) - static_cast<unsigned char>(b[i]));
  }
  return sum / static_cast<double>(std::max<std::size_t>(a.size(), 1));
}

TEST(Render, SameInputSameBytesAndLayersOfSettingsApplyInOrder) {
  const TemporaryFolder folder;
  const std::string plain = rawFrames({"--preset", "Flurry"});
  EXPECT_EQ(rawFrames({"--preset", "Flurry", "--gpu", "0"}), rawFrames({"--preset", "Flurry", "--gpu", "0"}));
  // --set comes after --preset wherever it stands; --script after both.
  EXPECT_GT(meanDifference(plain, rawFrames({"--set", "exposure=0.1", "--preset", "Flurry"})), 3);
  const std::string script = folder.write("dark.scene", "set exposure 0\nset ambient 0\n");
  const std::string dark = rawFrames({"--preset", "Flurry", "--set", "opaqueBackground=false", "--script", script});
  EXPECT_EQ(std::count(dark.begin(), dark.end(), '\0'), static_cast<std::ptrdiff_t>(dark.size()));
}

TEST(Render, TheCpuGivesTheSameBytesWithAnyThreadsAndAnySetOfFourLanes) {
  // Large enough for every pass to be shared out.
  const auto film = [](const std::string& gpu, const std::string& threads) {
    return veloria({"render", "--size", "1920x40", "--seconds", "0.3", "--fps", "20", "--preset", "Rave", "--gpu", gpu,
                    "--threads", threads, "--raw", "-"});
  };
  const ProcessResult one = film("cpu", "1");
  EXPECT_EQ(one.output.size(), 6U * 1920 * 40 * 4) << one.errors;
  EXPECT_TRUE(one.output == film("cpu", "2").output);
  EXPECT_TRUE(one.output == film("cpu", "3").output);
  const ProcessResult baseline = film("cpu:baseline", "1");
  const ProcessResult newer = film("cpu:sse42", "3");
  if (newer.exitCode != 0) GTEST_SKIP() << newer.errors;
  EXPECT_TRUE(baseline.output == newer.output);
}

TEST(Render, AtTheBottomEdgeThePictureIsUpsideDown) {
  const auto film = [](const char* edge, const char* pointer) {
    return rawFrames({"--edge", edge, "--bar-height", "10", "--set", "fadeTop=0.4", "--set", "pointerMode=\"push\"",
                      "--pointer", pointer});
  };
  const std::string top = film("top", "60,4,3,2");
  const std::string bottom = film("bottom", "60,12,3,-2");
  constexpr std::size_t row = 320 * 4;
  std::string turned;
  for (std::size_t frame = 0; frame < 10; ++frame) {
    for (std::size_t y = 16; y-- > 0;) turned += bottom.substr((frame * 16 + y) * row, row);
  }
  EXPECT_LT(meanDifference(top, turned), 0.01);
  EXPECT_GT(meanDifference(top, bottom), 1) << "not the same either way";
}

TEST(Render, SlowFramesLightUpAsSoonAsFastOnes) {
  constexpr std::size_t frame = 320 * 16 * 4;
  const std::string dark(frame, '\0');
  const auto light = [&](const std::string& film) { return meanDifference(film.substr(film.size() - frame), dark); };
  const ProcessResult slow = veloria({"render", "--size", "320x16", "--seconds", "0.75", "--fps", "4", "--set",
                                      "opaqueBackground=false", "--raw", "-"});
  ASSERT_EQ(slow.output.size(), 3 * frame);
  EXPECT_GT(light(slow.output), 0.7 * light(rawFrames({"--set", "opaqueBackground=false"})));
}

TEST(Render, ChannelsDriveTheScript) {
  const TemporaryFolder folder;
  const std::string script = folder.write("bass.scene", "bind exposure = bass * 3\n");
  const std::string timeline =
      folder.write("channels.jsonl",
                   "{\"t\": 0, \"name\": \"bass\", \"value\": 0}\n\n{\"value\": 1, \"name\": \"bass\", \"t\": 0.25}\n");
  const std::string quiet = rawFrames({"--script", script});
  const std::string loud = rawFrames({"--script", script, "--channel", "bass=1"});
  const std::string later = rawFrames({"--script", script, "--channels", timeline});
  const std::size_t frame = quiet.size() / 10;
  EXPECT_GT(meanDifference(quiet, loud), 5);
  EXPECT_EQ(later.substr(0, frame), quiet.substr(0, frame));
  EXPECT_GT(meanDifference(later.substr(9 * frame), quiet.substr(9 * frame)), 5);
}

TEST(Bench, ReportsTheGridAndTheTimes) {
  const ProcessResult result =
      veloria({"bench", "--size", "1920x32", "--frames", "10", "--json"}, {}, "VELORIA_VALIDATION=0");
  ASSERT_EQ(result.exitCode, 0) << result.errors;
  const auto json = nlohmann::json::parse(result.output);
  EXPECT_EQ(json["grid"], nlohmann::json({634, 32}));
  EXPECT_GT(json["fps"], 0);
  EXPECT_GT(json["passes"]["f_final"], 0);
}

TEST(Check, SaysWhatIsWrongOrWhatTheValuesAre) {
  const TemporaryFolder folder;
  const ProcessResult wrong = veloria({"check", folder.write("wrong.scene", "# fine\nset glow 1\nbind glw = 2\n")});
  EXPECT_EQ(wrong.exitCode, 1);
  EXPECT_EQ(wrong.errors, "Line 3: unknown parameter 'glw'\n");
  const std::string odd = folder.write("odd.scene", "\xEF\xBB\xBFset glow 1\nset glow 1\x1b[2J");
  EXPECT_EQ(veloria({"check", odd}).errors, "Line 2: '1?[2J' is not a number\n");

  const std::string script =
      folder.write("right.scene", "palette #ff0000 #00ff00\nset glow 1e9\nbind hue = bass + 1.5\nset speed 3\n");
  const ProcessResult right = veloria({"check", script, "--json", "--channel", "bass=0.25"});
  ASSERT_EQ(right.exitCode, 0) << right.errors;
  const auto json = nlohmann::json::parse(right.output);
  EXPECT_EQ(json["values"]["glow"], 4);
  EXPECT_EQ(json["values"]["hue"], 0.75);
  EXPECT_EQ(json["values"]["speed"], 3) << "the pace is not applied";
  EXPECT_EQ(json["palette"], nlohmann::json({{1, 0, 0}, {0, 1, 0}, {0, 1, 0}, {0, 1, 0}}));
}

TEST(Commands, BadInputGivesOneLineAndLeavesNothingBehind) {
  const TemporaryFolder folder;
  const std::string noScript = folder.write("bad.scene", "set exposure high\n");
  const std::string noJson = folder.write("bad.json", "{");
  const std::string noPicture = folder.write("bad.png", "this is no picture");
  const std::string noChannels = folder.write("bad.jsonl", "{\"t\": 0, \"name\": 5}\n");
  const std::string huge = folder.write("huge.json", std::string(50'000'000, '['));
  const std::string out = folder.file("out.png");
  const std::string nowhere = folder.file("no/such/folder/out.png");
  const struct {
    int exitCode;
    std::vector<std::string> arguments;
    std::string mentions;
  } cases[] = {
      {2, {"dance"}, "dance"},
      {2, {"render"}, "--output"},
      {2, {"render", "--output", out, "--raw", "-"}, "--output"},
      {2, {"render", "--output", out, "--sise", "1x1"}, "sise"},
      {2, {"render", "--output", out, "--preset", "northern lights"}, "Northern Lights"},
      {2, {"render", "--output", out, "--set", "exposur=1"}, "exposure"},
      {2, {"render", "--output", out, "--set", "layerMode=\"top\""}, "desktopStrip"},
      {1, {"render", "--output", out, "--script", noScript}, "Line 1"},
      {1, {"render", "--output", out, "--config", noJson}, "bad.json"},
      {1, {"render", "--output", out, "--config", huge}, "huge.json"},
      {1, {"render", "--output", out, "--background", noPicture}, "bad.png"},
      {1, {"render", "--output", out, "--channels", noChannels}, "line 1"},
      {1, {"render", "--output", out, "--gpu", "no such gpu"}, "\"no such gpu\"; there are: cpu, cpu:"},
      {1, {"render", "--size", "16x16", "--seconds", "0", "--output", nowhere}, "no/such"},
      {1, {"check", folder.file("absent.scene")}, "absent.scene"},
      {1, {}, "DISPLAY"},
  };
  for (const auto& c : cases) {
    std::string line;
    for (const auto& argument : c.arguments) line += argument + " ";
    const ProcessResult result = veloria(c.arguments, folder.path());
    EXPECT_EQ(result.exitCode, c.exitCode) << line << "\n" << result.errors;
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << line << "\n" << result.errors;
    EXPECT_NE(result.errors.find(c.mentions), std::string::npos) << line << "\n" << result.errors;
    EXPECT_EQ(result.output, "") << line;
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 5);
}

TEST(Commands, NumbersHaveAPointInEveryLanguage) {
  const TemporaryFolder folder;
  const ProcessResult made =
      runProcess("/usr/bin/env", {"localedef", "-c", "-i", "de_DE", "-f", "UTF-8", folder.file("comma")});
  if (!std::filesystem::exists(folder.file("comma")))
    GTEST_SKIP() << "no locale with a comma can be made here: " << made.errors;
  const std::string script = folder.write("point.scene", "set glow 1.5\nbind rays = 0.25\n");
  const ProcessResult result =
      runProcess(VELORIA_BINARY, {"check", script, "--json"}, {}, {"LOCPATH=" + folder.path(), "LC_ALL=comma"});
  const auto values = nlohmann::json::parse(result.output)["values"];
  EXPECT_EQ(values["glow"], 1.5);
  EXPECT_EQ(values["rays"], 0.25);
}

TEST(Commands, VersionAndDevicesAreListed) {
  EXPECT_EQ(veloria({"--version"}).output.substr(0, 10), "veloria 0.");
  const std::string devices = veloria({"devices"}).output;
  EXPECT_EQ(devices.substr(0, 3), "0  ");
  EXPECT_NE(devices.find("\ncpu "), std::string::npos);
  EXPECT_NE(devices.find("[default]\n"), std::string::npos);
}

}  // namespace
}  // namespace veloria::tests
