// What a newcomer is told when the panel hides the light, and what the buttons do.

#include "app/FirstMinute.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "AppFakes.h"

namespace veloria::tests {
namespace {

class FakeNotifier final : public Notifier {
 public:
  void show(Notification notification, std::function<void()> delivered) override {
    shown.push_back(std::move(notification));
    if (works) delivered();
  }
  bool works = true;
  std::vector<Notification> shown;
};

class FirstMinuteTest : public testing::Test {
 protected:
  FirstMinute newcomer() {
    return FirstMinute({.settings = &settings_,
                        .notifier = &notifier_,
                        .textCanBeKept = [this] { return textCanBeKept_; },
                        .wasTold = [this] { return told_; },
                        .rememberTold = [this] { told_ = true; }});
  }

  SettingsStore settings_{std::make_unique<MemoryStorage>(), [](std::string_view) { return std::nullopt; }};
  FakeNotifier notifier_;
  bool textCanBeKept_ = true;
  bool told_ = false;
};

TEST(LightOffers, areMadeOnlyWhereTheyHelp) {
  using Offers = std::vector<LightOffer>;
  const Offers both{LightOffer::overPanel, LightOffer::belowPanel};
  struct Case {
    LayerMode layer;
    double extraHeight;
    Offers offers;
  };
  for (const Case& c : {Case{LayerMode::desktopStrip, 0, both}, Case{LayerMode::desktopStrip, 2, both},
                        Case{LayerMode::desktopStrip, 24, {}}, Case{LayerMode::aboveMenuBar, 0, {}},
                        Case{LayerMode::desktopFull, 0, {}}}) {
    NimbraConfig config;
    config.layerMode = c.layer;
    config.extraHeight = c.extraHeight;
    EXPECT_EQ(lightOffers(config), c.offers) << static_cast<int>(c.layer) << " " << c.extraHeight;
  }
}

TEST(LightOffers, changeWhatTheySayAndNothingElse) {
  NimbraConfig before;
  before.exposure = 2;
  before.extraHeight = 5;

  NimbraConfig kept = before;
  kept.layerMode = LayerMode::aboveMenuBar;
  kept.preserveMenuBarText = true;
  EXPECT_EQ(take(LightOffer::overPanel, before, true), kept);

  NimbraConfig faint = take(LightOffer::overPanel, before, false);
  EXPECT_LE(faint.opacity, 0.6) << "the panel must stay readable";
  EXPECT_GE(faint.opacity, 0.3) << "and the light visible";
  faint.opacity = before.opacity;
  kept.preserveMenuBarText = false;
  EXPECT_EQ(faint, kept);
  before.opacity = 0.2;
  EXPECT_EQ(take(LightOffer::overPanel, before, false).opacity, 0.2) << "never made stronger";

  NimbraConfig hanging = before;
  hanging.extraHeight = 24;
  EXPECT_EQ(take(LightOffer::belowPanel, before, true), hanging);
  EXPECT_TRUE(lightOffers(hanging).empty());
}

TEST_F(FirstMinuteTest, oneNotificationAndAButtonDoesTheWork) {
  FirstMinute first = newcomer();
  first.lightIsHidden();
  first.lightIsHidden();
  ASSERT_EQ(notifier_.shown.size(), 1U);
  const Notification& shown = notifier_.shown.front();
  ASSERT_EQ(shown.actions.size(), 2U);
  EXPECT_NE(shown.textWithoutActions.find("start veloria again"), std::string::npos);
  EXPECT_EQ(shown.actions[1].label, "Let it hang below");
  shown.actions[1].chosen();
  EXPECT_EQ(settings_.config().extraHeight, 24);
  textCanBeKept_ = false;
  EXPECT_EQ(shown.actions[0].label, "Show it over the panel");
  shown.actions[0].chosen();
  EXPECT_EQ(settings_.config().layerMode, LayerMode::aboveMenuBar);
  EXPECT_FALSE(settings_.config().preserveMenuBarText) << "asked when it is chosen, not before";
}

TEST_F(FirstMinuteTest, isToldOncePerInstallationAndOnlyWhenItArrived) {
  notifier_.works = false;
  newcomer().lightIsHidden();
  EXPECT_FALSE(told_);
  notifier_.works = true;
  newcomer().lightIsHidden();
  EXPECT_TRUE(told_);
  newcomer().lightIsHidden();
  EXPECT_EQ(notifier_.shown.size(), 2U);
}

TEST_F(FirstMinuteTest, withNothingToOfferNothingIsSaid) {
  NimbraConfig config;
  config.layerMode = LayerMode::aboveMenuBar;
  settings_.setConfig(config);
  newcomer().lightIsHidden();
  EXPECT_TRUE(notifier_.shown.empty());
}

}  // namespace
}  // namespace veloria::tests
