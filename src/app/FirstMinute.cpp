#include "app/FirstMinute.h"

#include <algorithm>
#include <utility>

namespace veloria {

namespace {

constexpr double bleed = 24;  // points: as tall as the lowest panel, so that it is visible below most of them
constexpr double readableOpacity = 0.5;

constexpr const char* title = "Veloria is running";
constexpr const char* situation = "Its light is behind the panel at the top of the screen, and the panel may hide it.";
constexpr const char* advice =
    " To change that, run veloria again to open the settings. Under Bar, choose \"Over the bar\" or raise \"Bleed\".";

}  // namespace

std::vector<LightOffer> lightOffers(const NimbraConfig& config) {
  if (config.layerMode != LayerMode::desktopStrip || config.extraHeight >= bleed) return {};
  return {LightOffer::overPanel, LightOffer::belowPanel};
}

std::string_view label(LightOffer offer) {
  return offer == LightOffer::overPanel ? "Show it over the panel" : "Hang below the panel";
}

NimbraConfig withOffer(LightOffer offer, const NimbraConfig& config, bool textCanBeKept) {
  NimbraConfig taken = config;
  if (offer == LightOffer::belowPanel) {
    taken.extraHeight = std::max(taken.extraHeight, bleed);
    return taken;
  }
  taken.layerMode = LayerMode::aboveMenuBar;
  taken.preserveMenuBarText = textCanBeKept;
  if (!textCanBeKept) taken.opacity = std::min(taken.opacity, readableOpacity);
  return taken;
}

FirstMinute::FirstMinute(Ports ports) : ports_(std::move(ports)) {}

void FirstMinute::lightIsHidden() {
  const auto offers = lightOffers(ports_.settings->config());
  if (offers.empty() || asking_ || ports_.wasTold()) return;
  asking_ = true;
  Notification notification{
      .title = title, .text = situation, .actions = {}, .textWithoutActions = std::string(situation) + advice};
  for (const LightOffer offer : offers) {
    notification.actions.push_back({std::string(label(offer)), [this, offer] { accept(offer); }});
  }
  ports_.notifier->show(std::move(notification), ports_.rememberTold);
}

void FirstMinute::accept(LightOffer offer) {
  ports_.settings->setConfig(withOffer(offer, ports_.settings->config(), ports_.textCanBeKept()));
}

}  // namespace veloria
