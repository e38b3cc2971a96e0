#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/Environment.h"
#include "base/Observable.h"
#include "ports/SettingsStorage.h"
#include "settings/ExtraSettings.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// The key under which the record is kept. The version is part of it: there is no migration.
inline constexpr std::string_view settingsKey = "NimbraConfig.v1";

/// Holds the record with the user's own palette that was last put aside. The main record has no field for it.
inline constexpr std::string_view ownPaletteKey = "NimbraConfig.v1.ownPalette";

/// Holds the ExtraSettings.
inline constexpr std::string_view extraKey = "NimbraConfig.v1.extra";

/// Owns the live record: loads it, notifies observers of each change, and stores it if it differs. Main thread.
class SettingsStore {
 public:
  /// Loads the stored record, or the defaults if it is missing or invalid. Then applies the environment overrides
  /// (NIMBRA_VISUALIZER, NIMBRA_LAYER, NIMBRA_HDR, NIMBRA_SCRIPT), which are stored only with the next change. Never
  /// fails. Does not keep the environment.
  SettingsStore(std::unique_ptr<SettingsStorage> storage, const Environment& environment);

  /// Creates the process-wide store. Call it once, before shared(); a second call throws std::logic_error.
  static SettingsStore& makeShared(std::unique_ptr<SettingsStorage> storage, const Environment& environment);

  /// The process-wide store; throws std::logic_error before makeShared(). It lives until the process ends.
  static SettingsStore& shared();

  /// The current record. The reference is valid until the next change.
  const NimbraConfig& config() const { return config_.get(); }

  /// Replaces the record, notifies the observers, also of an equal record, and then stores it if it differs. A record
  /// that can't be encoded stays in memory only. The storage reports write failures.
  void setConfig(NimbraConfig config);

  /// Whether no record was stored when this store was made, valid or not, and none has been since.
  bool isNew() const { return isNew_; }

  /// Stores the record as it is.
  void keep() { persist(); }

  /// What is kept beside the record. setExtra() notifies the observers of the record, which is unchanged.
  const ExtraSettings& extra() const { return extra_; }
  void setExtra(const ExtraSettings& extra);

  /// Returns once the last change is on disk or has failed to get there. Any thread.
  void flush() { storage_->flush(); }

  /// The user's own palette: the one in use, else the one last put aside, possibly in an earlier session.
  const std::optional<Palette>& ownPalette() const;

  /// Stores the user's own palette, if there is one. Call it before that goes out of use.
  void keepOwnPalette();

  /// Calls the observer at once with the current record, and then with each new one; config() is then the new one
  /// already. See Observable for what an observer may do.
  Subscription subscribe(Observable<NimbraConfig>::Observer observer) { return config_.subscribe(std::move(observer)); }

 private:
  void load();
  void applyOverrides(const Environment& environment);
  void persist();
  void keepRejected();

  std::unique_ptr<SettingsStorage> storage_;
  Observable<NimbraConfig> config_{NimbraConfig()};
  std::optional<Palette> asidePalette_;
  ExtraSettings extra_;
  bool isNew_ = true;
  std::string rejected_;  ///< what was stored but didn't decode, until it is overwritten
  bool loading_ = true;
};

}  // namespace veloria
