#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "ports/Notifier.h"
#include "ports/OverlayPanel.h"
#include "ports/PanelClearing.h"
#include "settings/SettingsStore.h"

namespace veloria {

/// What decides how a new user first sees the light.
struct FirstStartFacts {
  Visibility::Kind behind = Visibility::Kind::seen;  ///< of a band behind the panel
  Visibility::Kind above = Visibility::Kind::seen;   ///< of one over it
  bool textCanBeKept = false;                        ///< the panel can be captured now
};

/// The settings of a first start: the first of the defaults, a band over the panel that keeps its text, and a bleed
/// beyond the panel that shows light and leaves the panel readable.
NimbraConfig firstStartConfig(const FirstStartFacts& facts);

/// A change that lets the user see the light, or see it better.
enum class LightOffer { clearPanel, overPanel, belowPanel };

/// The offers that help with these settings, the best one first. A panel is cleared if `way` says that we can do it;
/// `overIsSeen`: a band over the panel is seen.
std::vector<LightOffer> lightOffers(const NimbraConfig& config, PanelClearing::Way way, bool overIsSeen);

/// The text of its button.
std::string_view label(LightOffer offer);

/// The settings after accepting the offer. Behind a clear panel the band needs neither the layer over
/// it nor the bleed that were offered. Over the panel its text is kept
/// readable if `textCanBeKept`; otherwise the band is made faint enough to read through.
NimbraConfig withOffer(LightOffer offer, const NimbraConfig& config, bool textCanBeKept);

/// Tells a new user once what the panel does to the light, and offers to change that with one click. The notifier and
/// the clearing of the panel call back, so this must live until the event loop has ended. Main thread.
class FirstMinute {
 public:
  struct Ports {
    SettingsStore* settings = nullptr;
    Notifier* notifier = nullptr;
    PanelClearing* clearing = nullptr;  ///< may be null
    /// Whether a band over the panel is seen.
    std::function<bool()> overIsSeen;
    /// Whether the panel's text can be kept readable under the band now.
    std::function<bool()> textCanBeKept;
    /// Whether the user was told before, in this session or an earlier one.
    std::function<bool()> wasTold;
    /// Called once the user has been told.
    std::function<void()> rememberTold;
  };

  explicit FirstMinute(Ports ports);

  /// Call it when a panel hides the light or may do so, and after a first start that avoids this. On a desktop without
  /// notifications the user counts as not told.
  void tell();

 private:
  void accept(LightOffer offer);
  void clearPanel();

  Ports ports_;
  bool asking_ = false;
};

}  // namespace veloria
