#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/MediaClock.h"
#include "settings/LookPreset.h"
#include "settings/SettingsStore.h"

namespace veloria {

/// The hand of the person: what they change in the settings window, in the quick menu or by the nimbra command goes
/// through here into the store, and can be taken back. Main thread. The store must outlive it.
class SettingsEditor {
 public:
  /// Changes of the same thing that follow each other within this many seconds are one step of undo: a dragged slider.
  static constexpr double joinSeconds = 1.0;
  static constexpr std::size_t maximumSteps = 100;

  explicit SettingsEditor(SettingsStore& store, MediaClock clock = mediaTime);
  SettingsEditor(const SettingsEditor&) = delete;
  SettingsEditor& operator=(const SettingsEditor&) = delete;

  /// The current record; good until the next change.
  const NimbraConfig& config() const { return store_.config(); }

  /// Applies `edit` to a copy of the record and stores it when that changed anything. `what` names what is changed: a
  /// field's key or the title of an action.
  void change(std::string_view what, const std::function<void(NimbraConfig&)>& edit);

  /// Choices of colours. A palette of one's own that goes out of use by them is kept: see useOwnPalette().
  void choosePreset(const LookPreset& preset);
  void choosePalette(std::string_view name);
  void putOwnPaletteAside();
  /// See SettingsStore::ownPalette().
  const std::optional<Palette>& ownPalette() const { return store_.ownPalette(); }
  void useOwnPalette();

  /// Takes back, or makes again, the last step. Nothing happens when there is none. What others changed in between is
  /// kept where the step itself did not touch it.
  void undo();
  void redo();
  bool canUndo() const { return !done_.empty(); }
  bool canRedo() const { return !undone_.empty(); }

  /// Calls at once with the current record and then after every change, whoever made it.
  Subscription subscribe(std::function<void(const NimbraConfig&)> observer) { return store_.subscribe(observer); }

 private:
  struct Step {
    std::string what;
    NimbraConfig before, after;
    double time = 0;
  };
  void takeStep(std::vector<Step>& from, std::vector<Step>& to, bool forwards);

  SettingsStore& store_;
  MediaClock clock_;
  std::vector<Step> done_, undone_;
};

}  // namespace veloria
