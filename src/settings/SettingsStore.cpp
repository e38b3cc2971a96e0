#include "settings/SettingsStore.h"

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "base/Log.h"
#include "settings/SettingsCodec.h"

namespace veloria {

namespace {

std::unique_ptr<SettingsStore>& sharedHolder() {
  static std::unique_ptr<SettingsStore> store;
  return store;
}

/// Replaces bytes that are not UTF-8 by U+FFFD; otherwise the record could not be stored.
std::string repaired(const std::string& text) {
  using Json = nlohmann::json;
  return Json::parse(Json(text).dump(-1, ' ', false, Json::error_handler_t::replace)).get<std::string>();
}

}  // namespace

SettingsStore::SettingsStore(std::unique_ptr<SettingsStorage> storage, const Environment& environment)
    : storage_(std::move(storage)) {
  load();
  applyOverrides(environment);
  loading_ = false;
}

SettingsStore& SettingsStore::makeShared(std::unique_ptr<SettingsStorage> storage, const Environment& environment) {
  auto& holder = sharedHolder();
  if (holder) throw std::logic_error("the shared settings store exists already");
  holder = std::make_unique<SettingsStore>(std::move(storage), environment);
  return *holder;
}

SettingsStore& SettingsStore::shared() {
  auto& holder = sharedHolder();
  if (!holder) throw std::logic_error("the shared settings store has not been made yet");
  return *holder;
}

void SettingsStore::setConfig(NimbraConfig config) {
  const bool differs = config != config_.get();
  config_.set(std::move(config));
  if (!loading_ && differs) persist();
}

const std::optional<Palette>& SettingsStore::ownPalette() const {
  return config().customPalette ? config().customPalette : asidePalette_;
}

void SettingsStore::keepOwnPalette() {
  if (!config().customPalette) return;
  asidePalette_ = config().customPalette;
  if (const auto bytes = encodeSettings(config())) storage_->write(ownPaletteKey, *bytes);
}

void SettingsStore::setExtra(const ExtraSettings& extra) {
  if (extra == extra_) return;
  extra_ = extra;
  storage_->write(extraKey, encodeExtraSettings(extra_));
  setConfig(config());
}

void SettingsStore::load() {
  if (const auto kept = storage_->read(extraKey)) extra_ = decodeExtraSettings(*kept);
  if (const auto kept = storage_->read(ownPaletteKey)) {
    if (auto decoded = decodeSettings(*kept)) asidePalette_ = std::move(decoded->customPalette);
  }
  auto bytes = storage_->read(settingsKey);
  if (!bytes) return;
  isNew_ = false;
  auto decoded = decodeSettings(*bytes);
  if (decoded) return setConfig(*std::move(decoded));
  NimbraLog::debug("stored settings dropped: " + decoded.error());
  rejected_ = *std::move(bytes);
}

void SettingsStore::applyOverrides(const Environment& environment) {
  const auto change = [this](auto edit) {
    NimbraConfig changed = config();
    edit(changed);
    setConfig(std::move(changed));
  };
  if (const auto value = environment("NIMBRA_VISUALIZER")) {
    if (const auto mode = fromRawValue<Visualizer>(*value)) change([&](NimbraConfig& c) { c.visualizer = *mode; });
  }
  if (const auto value = environment("NIMBRA_LAYER")) {
    if (const auto mode = fromRawValue<LayerMode>(*value)) change([&](NimbraConfig& c) { c.layerMode = *mode; });
  }
  if (const auto value = environment("NIMBRA_HDR")) change([&](NimbraConfig& c) { c.hdrGlow = *value == "1"; });
  if (const auto value = environment("NIMBRA_SCRIPT")) {
    change([&](NimbraConfig& c) { c.customScript = repaired(*value); });
    change([](NimbraConfig& c) { c.visualizer = Visualizer::script; });
  }
}

void SettingsStore::persist() {
  const auto bytes = encodeSettings(config());
  if (!bytes) return NimbraLog::debug("settings not stored: they can't be encoded");
  keepRejected();
  isNew_ = false;
  storage_->write(settingsKey, *bytes);
}

/// Keeps a copy of the invalid file, so that a slip in a file edited by hand does not cost the user's work.
void SettingsStore::keepRejected() {
  if (rejected_.empty()) return;
  storage_->write(std::string(settingsKey) + ".rejected", rejected_);
  rejected_.clear();
}

}  // namespace veloria
