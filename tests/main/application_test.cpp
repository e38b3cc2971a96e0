#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "main/linux/LinuxDesktop.h"

namespace veloria::tests {
namespace {

TEST(DesktopChoice, WaylandIfItAllowsOverlaysElseX11) {
  const std::string broken = "The Wayland display w can't be opened.";
  const std::tuple<const char*, DesktopFacts, DesktopKind, const char*> cases[] = {
      {"layer shell and X11", {true, true, {}, true, true}, DesktopKind::wayland, ""},
      {"no layer shell", {true, true, {}, false, false}, DesktopKind::none, "no layer shell"},
      {"no layer shell but X11", {true, true, {}, false, true}, DesktopKind::x11, ""},
      {"Wayland is gone", {true, false, broken, false, false}, DesktopKind::none, "can't be opened"},
      {"Wayland is gone, X11 is there", {true, false, broken, false, true}, DesktopKind::x11, ""},
      {"X11 alone", {.waylandProblem = {}, .x11Named = true}, DesktopKind::x11, ""},
      {"nothing", {}, DesktopKind::none, "WAYLAND_DISPLAY"},
  };
  for (const auto& [what, facts, kind, words] : cases) {
    const DesktopChoice choice = chooseDesktop(facts);
    EXPECT_EQ(choice.kind, kind) << what;
    EXPECT_THAT(choice.problem, testing::HasSubstr(words)) << what;
    EXPECT_EQ(choice.problem.empty(), kind != DesktopKind::none) << what;
  }
}

}  // namespace
}  // namespace veloria::tests
