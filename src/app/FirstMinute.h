#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "ports/Notifier.h"
#include "settings/SettingsStore.h"

namespace veloria {

/// A change of settings that shows light which a panel hides.
enum class LightOffer { overPanel, belowPanel };

/// The offers that help with these settings, the better one first; none if the band is not behind a panel.
std::vector<LightOffer> lightOffers(const NimbraConfig& config);

/// The text of its button.
std::string_view label(LightOffer offer);

/// The settings after accepting the offer. Over the panel its text is kept readable if `textCanBeKept`; otherwise the
/// band is made faint enough to read through.
NimbraConfig withOffer(LightOffer offer, const NimbraConfig& config, bool textCanBeKept);

/// Tells a new user once that a panel hides the light, and offers to fix that with one click. The notifier calls back,
/// so this must live until the event loop has ended. Main thread.
class FirstMinute {
 public:
  struct Ports {
    SettingsStore* settings = nullptr;
    Notifier* notifier = nullptr;
    /// Whether the panel's text can be kept readable under the band now.
    std::function<bool()> textCanBeKept;
    /// Whether the user was told before, in this session or an earlier one.
    std::function<bool()> wasTold;
    /// Called once the user has been told.
    std::function<void()> rememberTold;
  };

  explicit FirstMinute(Ports ports);

  /// Call it when a panel hides the light or may do so. On a desktop without notifications the user counts as not told.
  void lightIsHidden();

 private:
  void accept(LightOffer offer);

  Ports ports_;
  bool asking_ = false;
};

}  // namespace veloria
