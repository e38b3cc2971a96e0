#pragma once

#include <functional>
#include <string>

namespace veloria {

/// Port: makes the desktop's own panel clear, so that the light shows behind its text, and puts it back. Nothing is
/// changed unless the user asks for it. Main thread; no call waits for the desktop.
class PanelClearing {
 public:
  /// What can be done on this desktop.
  enum class Way {
    none,         ///< nothing; the text says why
    byHand,       ///< the text says what to do, and `lines` is what to copy
    oneClick,     ///< clear() does it
    afterAsking,  ///< clear() does it, with an effect that the text names and the user must agree to first
  };
  struct Offer {
    Way way = Way::none;
    std::string text;   ///< for the user; may be empty for oneClick
    std::string lines;  ///< for the configuration file that `text` names; may be empty
    bool operator==(const Offer&) const = default;
  };
  /// Called once, later. `problem`: a sentence for the user, empty if it is done. `note`: what the user still has to
  /// do, such as logging out; may be empty.
  using Answer = std::function<void(const std::string& problem, const std::string& note)>;

  virtual ~PanelClearing() = default;
  PanelClearing(const PanelClearing&) = delete;
  PanelClearing& operator=(const PanelClearing&) = delete;

  virtual Offer offer() const = 0;
  /// True if the panel was cleared by us or clears itself while the band wants to be seen through it: it hides nothing.
  virtual bool letsLightThrough() const = 0;
  /// True if restore() would change something.
  virtual bool canRestore() const = 0;
  /// Makes the panel clear. The values that it had are written down first; a second clear() leaves these alone.
  virtual void clear(Answer answer) = 0;
  /// Puts back what clear() found, in this run or an earlier one, unless the user has changed it since.
  virtual void restore(Answer answer) = 0;
  /// Says whether the band wants to be seen through the panel, for panels that are clear only meanwhile.
  virtual void setWanted(bool) {}
  /// Called when any of the answers above may have changed. An empty handler ends the calls.
  virtual void setChangeHandler(std::function<void()> handler) = 0;

 protected:
  PanelClearing() = default;
};

}  // namespace veloria
