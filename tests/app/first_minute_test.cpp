// What a newcomer is told if the panel hides the light, and what the buttons do.

#include "app/FirstMinute.h"

#include <gmock/gmock.h>

#include "../support/MemoryStorage.h"

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

  SettingsStore settings_{std::make_unique<MemoryStorage>(), emptyEnvironment};
  FakeNotifier notifier_;
  bool textCanBeKept_ = true;
  bool told_ = false;
};

TEST(LightOffers, AreMadeOnlyIfTheyHelp) {
  const std::tuple<LayerMode, double, std::size_t> cases[] = {{LayerMode::desktopStrip, 23, 2},
                                                              {LayerMode::desktopStrip, 24, 0},
                                                              {LayerMode::aboveMenuBar, 0, 0},
                                                              {LayerMode::desktopFull, 0, 0}};
  for (const auto& [layer, extraHeight, count] : cases) {
    NimbraConfig config;
    config.layerMode = layer;
    config.extraHeight = extraHeight;
    EXPECT_EQ(lightOffers(config).size(), count) << static_cast<int>(layer) << " " << extraHeight;
  }
}

TEST(LightOffers, ChangeWhatTheySayAndNothingElse) {
  NimbraConfig before;
  before.extraHeight = 5;
  NimbraConfig kept = before;
  kept.layerMode = LayerMode::aboveMenuBar;
  kept.preserveMenuBarText = true;
  EXPECT_EQ(withOffer(LightOffer::overPanel, before, true), kept);

  NimbraConfig faint = kept;
  faint.preserveMenuBarText = false;
  faint.opacity = 0.5;
  EXPECT_EQ(withOffer(LightOffer::overPanel, before, false), faint) << "the panel must stay readable";
  before.opacity = 0.2;
  EXPECT_EQ(withOffer(LightOffer::overPanel, before, false).opacity, 0.2) << "never made stronger";

  for (const double height : {5, 30}) {
    NimbraConfig hanging = before;
    hanging.extraHeight = height;
    const NimbraConfig taken = withOffer(LightOffer::belowPanel, hanging, true);
    hanging.extraHeight = std::max(height, 24.0);
    EXPECT_EQ(taken, hanging);
  }
}

TEST_F(FirstMinuteTest, OneNotificationAndAButtonDoesTheWork) {
  FirstMinute first = newcomer();
  notifier_.works = false;
  first.lightIsHidden();
  first.lightIsHidden();
  ASSERT_EQ(notifier_.shown.size(), 1U);
  const Notification& shown = notifier_.shown.front();
  ASSERT_EQ(shown.actions.size(), 2U);
  EXPECT_GT(shown.textWithoutActions.size(), shown.text.size()) << "it says what else can be done";
  EXPECT_NE(shown.actions[0].label, shown.actions[1].label);
  shown.actions[1].chosen();
  EXPECT_EQ(settings_.config().extraHeight, 24);
  textCanBeKept_ = false;
  shown.actions[0].chosen();
  EXPECT_EQ(settings_.config().layerMode, LayerMode::aboveMenuBar);
  EXPECT_FALSE(settings_.config().preserveMenuBarText) << "asked when it is chosen, not before";
}

TEST_F(FirstMinuteTest, IsToldOncePerInstallationAndOnlyIfThereIsAnOffer) {
  NimbraConfig above;
  above.layerMode = LayerMode::aboveMenuBar;
  settings_.setConfig(above);
  newcomer().lightIsHidden();
  EXPECT_TRUE(notifier_.shown.empty());
  settings_.setConfig({});
  notifier_.works = false;
  newcomer().lightIsHidden();
  EXPECT_FALSE(told_);
  notifier_.works = true;
  newcomer().lightIsHidden();
  EXPECT_TRUE(told_);
  newcomer().lightIsHidden();
  EXPECT_EQ(notifier_.shown.size(), 2U);
}

}  // namespace
}  // namespace veloria::tests
