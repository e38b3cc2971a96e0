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

/// Changes that the user makes in the settings window, in the quick menu or with the nimbra command. They go through
/// here into the store and can be undone. Main thread. The store must outlive it.
class SettingsEditor {
 public:
  /// Changes of the same thing within this many seconds of each other are one undo step, such as a dragged slider.
  static constexpr double joinSeconds = 1.0;
  static constexpr std::size_t maximumSteps = 100;

  explicit SettingsEditor(SettingsStore& store, MediaClock clock = mediaTime);
  SettingsEditor(const SettingsEditor&) = delete;
  SettingsEditor& operator=(const SettingsEditor&) = delete;

  /// The current record; good until the next change.
  const NimbraConfig& config() const { return store_.config(); }

  /// Applies `edit` to a copy of the record and stores the copy if it differs. `what` names what is changed: a field's
  /// key or the title of an action.
  void change(std::string_view what, const std::function<void(NimbraConfig&)>& edit);

  /// Changes what is kept beside the record.
  void changeExtra(std::string_view what, const ExtraSettings& wanted);
  const ExtraSettings& extra() const { return store_.extra(); }

  /// These replace the palette. The user's own, if it goes out of use, is kept for useOwnPalette().
  void choosePreset(const LookPreset& preset);
  void choosePalette(std::string_view name);
  void putOwnPaletteAside();
  /// See SettingsStore::ownPalette().
  const std::optional<Palette>& ownPalette() const { return store_.ownPalette(); }
  void useOwnPalette();

  /// Undo or redo the last step, if there is one. Fields that the step did not touch keep what others changed
  /// meanwhile.
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
    ExtraSettings extraBefore = {}, extraAfter = {};
  };
  void add(Step step);
  void moveStep(std::vector<Step>& from, std::vector<Step>& to, bool forwards);

  SettingsStore& store_;
  MediaClock clock_;
  std::vector<Step> done_, undone_;
};

}  // namespace veloria
