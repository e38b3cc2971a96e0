#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "main/linux/DesktopChoice.h"

namespace veloria::tests {
namespace {

using ::testing::HasSubstr;

TEST(DesktopChoice, WaylandWhereOverlaysCanBeHadElseX11) {
  struct Case {
    const char* what;
    DesktopFacts facts;
    DesktopKind kind;
    const char* words;
  };
  const DesktopFacts sway{.waylandNamed = true, .waylandAnswers = true, .waylandProblem = {}, .layerShell = true};
  DesktopFacts swayAndX = sway;
  swayAndX.x11Named = true;
  const DesktopFacts gnome{.waylandNamed = true, .waylandAnswers = true, .waylandProblem = {}};
  DesktopFacts gnomeAndX = gnome;
  gnomeAndX.x11Named = true;
  const DesktopFacts broken{.waylandNamed = true, .waylandProblem = "The Wayland display w can't be opened."};
  DesktopFacts brokenAndX = broken;
  brokenAndX.x11Named = true;
  const Case cases[] = {
      {"layer shell", sway, DesktopKind::wayland, ""},
      {"layer shell and X11", swayAndX, DesktopKind::wayland, ""},
      {"no layer shell", gnome, DesktopKind::none, "no layer shell"},
      {"no layer shell but X11", gnomeAndX, DesktopKind::x11, ""},
      {"Wayland is gone", broken, DesktopKind::none, "can't be opened"},
      {"Wayland is gone, X11 is there", brokenAndX, DesktopKind::x11, ""},
      {"X11 alone", {.waylandProblem = {}, .x11Named = true}, DesktopKind::x11, ""},
      {"nothing", {}, DesktopKind::none, "WAYLAND_DISPLAY"},
  };
  for (const Case& each : cases) {
    const DesktopChoice choice = chooseDesktop(each.facts);
    EXPECT_EQ(choice.kind, each.kind) << each.what;
    EXPECT_THAT(choice.problem, HasSubstr(each.words)) << each.what;
    EXPECT_EQ(choice.problem.empty(), each.kind != DesktopKind::none) << each.what;
  }
}

}  // namespace
}  // namespace veloria::tests
