#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "ports/Notifier.h"
#include "settings/SettingsStore.h"

namespace veloria {

/// A change of settings that brings light into view which a panel hides.
enum class LightOffer { overPanel, belowPanel };

/// The offers that would help with these settings, the better one first; none where the band is not behind a panel.
std::vector<LightOffer> lightOffers(const NimbraConfig& config);

/// What is written on its button.
std::string_view label(LightOffer offer);

/// The settings with the offer taken. Over the panel its text is kept where that can be done (`textCanBeKept`);
/// elsewhere the band is made faint enough to read through.
NimbraConfig take(LightOffer offer, const NimbraConfig& config, bool textCanBeKept);

/// Tells a newcomer, once, that a panel hides the light, with a way out that is one click away. It is called back by
/// the notifier, so it must live until no more events come. Main thread.
class FirstMinute {
 public:
  struct Ports {
    SettingsStore* settings = nullptr;
    Notifier* notifier = nullptr;
    /// Whether the panel's text can be kept readable under the band now.
    std::function<bool()> textCanBeKept;
    /// Whether a newcomer was told before, by this process or an earlier one.
    std::function<bool()> wasTold;
    /// Called when they have been.
    std::function<void()> rememberTold;
  };

  explicit FirstMinute(Ports ports);

  /// To be called when a panel hides the light, or may hide it. A desktop that shows no notifications does no harm, and
  /// leaves it untold.
  void lightIsHidden();

 private:
  void accept(LightOffer offer);

  Ports ports_;
  bool asking_ = false;
};

}  // namespace veloria
