#include "app/FirstMinute.h"

#include <algorithm>
#include <string>
#include <utility>

namespace veloria {

namespace {

constexpr double bleed = 24;  // points: as tall as the lowest panel, so that it is visible beside most of them
constexpr double readableOpacity = 0.5;

constexpr const char* title = "Veloria is running";
constexpr const char* behind = "Its light is behind the panel, and the panel may hide it.";
constexpr const char* elsewhere = "Its light is most beautiful behind the text of a clear panel.";
constexpr const char* advice =
    " To change that, run veloria again to open the settings. Under Bar, choose \"Over the bar\" or raise \"Bleed\".";
constexpr const char* adviceToClear = " To change that, run veloria again to open the settings, and look under Bar.";

bool isBehindPanel(const NimbraConfig& config) {
  return config.layerMode == LayerMode::desktopStrip && config.extraHeight < bleed;
}

}  // namespace

NimbraConfig firstStartConfig(const FirstStartFacts& facts) {
  const NimbraConfig defaults;
  if (facts.behind == Visibility::Kind::seen) return defaults;
  const bool over = facts.above == Visibility::Kind::seen && facts.textCanBeKept;
  return withOffer(over ? LightOffer::overPanel : LightOffer::belowPanel, defaults, true);
}

std::vector<LightOffer> lightOffers(const NimbraConfig& config, PanelClearing::Way way, bool overIsSeen) {
  std::vector<LightOffer> offers;
  if (way == PanelClearing::Way::oneClick || way == PanelClearing::Way::afterAsking)
    offers.push_back(LightOffer::clearPanel);
  if (!isBehindPanel(config)) return offers;
  if (overIsSeen) offers.push_back(LightOffer::overPanel);
  offers.push_back(LightOffer::belowPanel);
  return offers;
}

std::string_view label(LightOffer offer) {
  switch (offer) {
    case LightOffer::clearPanel:
      return "Let the light through the panel";
    case LightOffer::overPanel:
      return "Show it over the panel";
    case LightOffer::belowPanel:
      return "Let it reach beyond the panel";
  }
  return {};
}

NimbraConfig withOffer(LightOffer offer, const NimbraConfig& config, bool textCanBeKept) {
  NimbraConfig taken = config;
  switch (offer) {
    case LightOffer::clearPanel:
      if (taken.layerMode == LayerMode::aboveMenuBar) taken.layerMode = LayerMode::desktopStrip;
      if (taken.extraHeight == bleed) taken.extraHeight = 0;
      break;
    case LightOffer::belowPanel:
      taken.extraHeight = std::max(taken.extraHeight, bleed);
      break;
    case LightOffer::overPanel:
      taken.layerMode = LayerMode::aboveMenuBar;
      taken.preserveMenuBarText = textCanBeKept;
      if (!textCanBeKept) taken.opacity = std::min(taken.opacity, readableOpacity);
      break;
  }
  return taken;
}

FirstMinute::FirstMinute(Ports ports) : ports_(std::move(ports)) {}

void FirstMinute::tell() {
  const auto clearing = ports_.clearing != nullptr ? ports_.clearing->offer() : PanelClearing::Offer{};
  const NimbraConfig& config = ports_.settings->config();
  const auto offers = lightOffers(config, clearing.way, ports_.overIsSeen());
  if (offers.empty() || asking_ || ports_.wasTold()) return;
  asking_ = true;
  const bool hidden = isBehindPanel(config);
  const std::string situation = hidden ? behind : elsewhere;
  const bool warns = clearing.way == PanelClearing::Way::afterAsking && !clearing.text.empty();
  Notification notification{.title = title,
                            .text = situation + (warns ? ' ' + clearing.text : std::string()),
                            .actions = {},
                            .textWithoutActions = situation + (hidden ? advice : adviceToClear)};
  for (const LightOffer offer : offers) {
    notification.actions.push_back({std::string(label(offer)), [this, offer] { accept(offer); }});
  }
  ports_.notifier->show(std::move(notification), ports_.rememberTold);
}

void FirstMinute::accept(LightOffer offer) {
  if (offer == LightOffer::clearPanel) return clearPanel();
  ports_.settings->setConfig(withOffer(offer, ports_.settings->config(), ports_.textCanBeKept()));
}

/// The band goes behind the panel once that is clear, not while the user still has something to do.
void FirstMinute::clearPanel() {
  ports_.clearing->clear([this](const std::string& problem, const std::string& note) {
    if (problem.empty() && note.empty()) {
      ports_.settings->setConfig(withOffer(LightOffer::clearPanel, ports_.settings->config(), true));
    } else {
      const std::string text = problem.empty() ? note : problem;
      ports_.notifier->show({.title = title, .text = text, .actions = {}, .textWithoutActions = text}, [] {});
    }
  });
}

}  // namespace veloria
