#include "settings/SettingsEditor.h"

#include <utility>

namespace veloria {

namespace {

/// Copies to `config` every field of `to` that differs from `from`.
void applyDifference(NimbraConfig& config, const NimbraConfig& from, const NimbraConfig& to) {
#define VELORIA_FIELD(type, name, initial, group) \
  if (!(from.name == to.name)) config.name = to.name;
#include "settings/NimbraConfigFields.h"
}

}  // namespace

SettingsEditor::SettingsEditor(SettingsStore& store, MediaClock clock) : store_(store), clock_(std::move(clock)) {}

void SettingsEditor::change(std::string_view what, const std::function<void(NimbraConfig&)>& edit) {
  const NimbraConfig before = config();
  NimbraConfig after = before;
  edit(after);
  if (after == before) return;
  const double now = clock_();
  const bool joins = undone_.empty() && !done_.empty() && done_.back().what == what && done_.back().after == before &&
                     now - done_.back().time <= joinSeconds;
  undone_.clear();
  if (joins) {
    done_.back().after = after;
    done_.back().time = now;
    if (done_.back().before == after) done_.pop_back();  // back where it was: nothing to undo
  } else {
    add({std::string(what), before, after, now});
  }
  store_.setConfig(std::move(after));
}

void SettingsEditor::add(Step step) {
  if (done_.size() == maximumSteps) done_.erase(done_.begin());
  done_.push_back(std::move(step));
}

void SettingsEditor::changeExtra(std::string_view what, const ExtraSettings& wanted) {
  const ExtraSettings before = extra();
  if (wanted == before) return;
  undone_.clear();
  add({std::string(what), config(), config(), -joinSeconds, before, wanted});
  store_.setExtra(wanted);
}

void SettingsEditor::choosePreset(const LookPreset& preset) {
  store_.keepOwnPalette();
  change(preset.name, [&](NimbraConfig& config) { config = choose(config, preset); });
}

void SettingsEditor::choosePalette(std::string_view name) {
  store_.keepOwnPalette();
  change("paletteName", [&](NimbraConfig& config) {
    config.paletteName = name;
    config.customPalette.reset();
  });
}

void SettingsEditor::putOwnPaletteAside() {
  store_.keepOwnPalette();
  change("customPalette aside", [](NimbraConfig& config) { config.customPalette.reset(); });
}

void SettingsEditor::useOwnPalette() {
  change("customPalette use", [this](NimbraConfig& config) { config.customPalette = ownPalette(); });
}

void SettingsEditor::undo() {
  moveStep(done_, undone_, false);
}

void SettingsEditor::redo() {
  moveStep(undone_, done_, true);
}

void SettingsEditor::moveStep(std::vector<Step>& from, std::vector<Step>& to, bool forwards) {
  if (from.empty()) return;
  Step step = std::move(from.back());
  from.pop_back();
  step.time = -joinSeconds;  // nothing joins an undone step
  NimbraConfig config = store_.config();
  applyDifference(config, forwards ? step.before : step.after, forwards ? step.after : step.before);
  if (step.extraBefore != step.extraAfter) store_.setExtra(forwards ? step.extraAfter : step.extraBefore);
  to.push_back(std::move(step));
  store_.setConfig(std::move(config));
}

}  // namespace veloria
