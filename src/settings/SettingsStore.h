#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/Environment.h"
#include "base/Observable.h"
#include "ports/SettingsStorage.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// The key under which the record is kept. The version is part of it: there is no migration.
inline constexpr std::string_view settingsKey = "NimbraConfig.v1";

/// The record that had the palette of the user's own which was put aside last. The palette is not kept in the record
/// itself, whose fields are fixed.
inline constexpr std::string_view ownPaletteKey = "NimbraConfig.v1.ownPalette";

/// Owns the one live record: loads it, tells of every change and stores it whenever it really changed. Main thread.
class SettingsStore {
 public:
  /// Loads the stored record; one that is missing or doesn't decode gives the defaults, silently. Then the environment
  /// overrides (NIMBRA_VISUALIZER, NIMBRA_LAYER, NIMBRA_HDR, NIMBRA_SCRIPT), which are not stored until something
  /// else changes. Never fails. The environment is not kept.
  SettingsStore(std::unique_ptr<SettingsStorage> storage, const Environment& environment);

  /// Makes the store of the process, once, before anything asks for it; a second call throws std::logic_error.
  static SettingsStore& makeShared(std::unique_ptr<SettingsStorage> storage, const Environment& environment);

  /// The store of the process; throws std::logic_error before makeShared(). It lives until the process ends.
  static SettingsStore& shared();

  /// The current record. The reference is good until the next change; copy what has to last.
  const NimbraConfig& config() const { return config_.get(); }

  /// Replaces the record and tells the observers; then, when it differs from the one before, stores it. Observers
  /// are told of an equal record too. A record that can't be encoded is kept in memory but not stored; one that can't
  /// be written is the storage's to tell of.
  void setConfig(NimbraConfig config);

  /// Returns when the storage has put the last change where it outlasts the program, or could not. Any thread.
  void flush() { storage_->flush(); }

  /// The palette of the user's own: the one in use, else the one that was put aside last, if need be by an earlier
  /// process.
  const std::optional<Palette>& ownPalette() const;

  /// To be called before a palette of the user's own goes out of use: keeps it, stored. Does nothing when there is
  /// none.
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
  std::string rejected_;  ///< what was stored but didn't decode, until it is overwritten
  bool loading_ = true;
};

}  // namespace veloria
