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
  SettingsStore settings_{std::make_unique<MemoryStorage>(), emptyEnvironment};
  FakeNotifier notifier_;
  bool textCanBeKept_ = true;
  bool told_ = false;
  FirstMinute first_{{.settings = &settings_,
                      .notifier = &notifier_,
                      .textCanBeKept = [this] { return textCanBeKept_; },
                      .wasTold = [this] { return told_; },
                      .rememberTold = [this] { told_ = true; }}};
};

TEST(LightOffers, AreMadeOnlyIfTheyHelpAndChangeWhatTheySayOnly) {
  const auto record = [](LayerMode layer, double extraHeight, bool keepsText, double opacity) {
    NimbraConfig config;
    config.layerMode = layer;
    config.extraHeight = extraHeight;
    config.preserveMenuBarText = keepsText;
    config.opacity = opacity;
    return config;
  };
  constexpr auto behind = LayerMode::desktopStrip, above = LayerMode::aboveMenuBar;
  EXPECT_EQ(lightOffers(record(behind, 23, false, 1)).size(), 2U);
  for (const NimbraConfig& lit : {record(behind, 24, false, 1), record(above, 0, false, 1)}) {
    EXPECT_EQ(lightOffers(lit).size(), 0U);
  }
  const NimbraConfig before = record(behind, 5, false, 0.9), faint = record(behind, 30, false, 0.2);
  EXPECT_EQ(withOffer(LightOffer::overPanel, before, true), record(above, 5, true, 0.9));
  EXPECT_EQ(withOffer(LightOffer::overPanel, before, false), record(above, 5, false, 0.5)) << "it stays readable";
  EXPECT_EQ(withOffer(LightOffer::overPanel, faint, false), record(above, 30, false, 0.2)) << "never made stronger";
  EXPECT_EQ(withOffer(LightOffer::belowPanel, before, true), record(behind, 24, false, 0.9));
  EXPECT_EQ(withOffer(LightOffer::belowPanel, faint, true), faint);
}

TEST_F(FirstMinuteTest, OneNotificationAndAButtonDoesTheWork) {
  notifier_.works = false;
  for (int i = 0; i < 2; ++i) first_.lightIsHidden();
  EXPECT_FALSE(told_);
  ASSERT_EQ(notifier_.shown.size(), 1U);
  const Notification& shown = notifier_.shown.front();
  ASSERT_EQ(shown.actions.size(), 2U);
  shown.actions[1].chosen();
  EXPECT_EQ(settings_.config().extraHeight, 24);
  textCanBeKept_ = false;
  shown.actions[0].chosen();
  EXPECT_EQ(settings_.config().layerMode, LayerMode::aboveMenuBar);
  EXPECT_FALSE(settings_.config().preserveMenuBarText) << "asked when it is chosen, not before";
}

TEST_F(FirstMinuteTest, IsToldOncePerInstallation) {
  told_ = true;
  first_.lightIsHidden();
  EXPECT_TRUE(notifier_.shown.empty());
  told_ = false;
  first_.lightIsHidden();
  EXPECT_TRUE(told_);
}

}  // namespace
}  // namespace veloria::tests
