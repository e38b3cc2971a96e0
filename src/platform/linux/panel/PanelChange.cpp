#include "platform/linux/panel/PanelChange.h"

#include <algorithm>
#include <utility>

namespace veloria {

namespace {

using nlohmann::json;
using Settings = std::vector<PanelSetting>;

struct Change {
  std::string key;
  json from;
  json to;
};
using Changes = std::vector<Change>;

/// The key of the first change that the desktop does not show; empty if it shows all of them.
Result<std::string> firstMissing(PanelSettings& panel, const Changes& changes) {
  const auto settings = panel.look();
  if (!settings) return Failure{settings.error()};
  for (const Change& change : changes) {
    const auto found = std::ranges::find(*settings, change.key, &PanelSetting::key);
    if (found == settings->end() || found->now != change.to) return change.key;
  }
  return std::string();
}

Result<Done> writeAll(PanelSettings& panel, const Changes& changes, std::size_t& written) {
  for (const Change& change : changes) {
    ++written;  // it may have been done in spite of an error
    if (auto done = panel.write(change.key, change.to); !done) return done;
  }
  const auto missing = firstMissing(panel, changes);
  if (!missing) return Failure{missing.error()};
  if (!missing->empty()) return Failure{"The desktop did not keep the change of its setting '" + *missing + "'."};
  return Done{};
}

/// Makes all changes or, if one fails, none. `undone` is false if some of them could not be taken back.
Result<Done> change(PanelSettings& panel, const Changes& changes, bool& undone) {
  std::size_t written = 0;
  auto done = writeAll(panel, changes, written);
  if (done) return done;
  Changes back;
  for (std::size_t i = written; i-- > 0;) back.push_back({changes[i].key, changes[i].to, changes[i].from});
  for (const Change& each : back) (void)panel.write(each.key, each.to);
  const auto missing = firstMissing(panel, back);
  undone = missing && missing->empty();
  return undone ? done : Failure{done.error() + " The panel may be half changed: put it back later."};
}

PanelOutcome failure(std::string problem, PanelSettings& panel, const PanelJournal& journal) {
  PanelOutcome outcome = lookAtPanel(panel, journal);
  outcome.problem = std::move(problem);
  return outcome;
}

}  // namespace

PanelOutcome lookAtPanel(PanelSettings& panel, const PanelJournal& journal) {
  PanelOutcome outcome;
  const auto settings = panel.look();
  const auto memories = journal.read();
  if (!settings) {
    outcome.problem = settings.error();
    return outcome;
  }
  outcome.isClear = std::ranges::all_of(*settings, [](const auto& each) { return each.now == each.clear; });
  for (const PanelSetting& each : *settings) {
    const bool known = memories && memories->contains(each.key);
    if (known && memories->at(each.key).after == each.now) outcome.canRestore = true;
  }
  return outcome;
}

PanelOutcome clearPanel(PanelSettings& panel, const PanelJournal& journal) {
  const auto settings = panel.look();
  if (!settings) return failure(settings.error(), panel, journal);
  const auto before = journal.read();
  if (!before) return failure(before.error(), panel, journal);
  PanelMemories memories = *before;
  Changes changes;
  for (const PanelSetting& each : *settings) {
    if (each.now == each.clear) continue;
    changes.push_back({each.key, each.now, each.clear});
    memories.insert_or_assign(each.key, PanelMemory{each.now, each.clear});
  }
  if (changes.empty()) return lookAtPanel(panel, journal);
  if (const auto kept = journal.write(memories); !kept) return failure(kept.error(), panel, journal);
  bool undone = true;
  if (const auto made = change(panel, changes, undone); !made) {
    if (undone) (void)journal.write(*before);
    return failure(made.error(), panel, journal);
  }
  return lookAtPanel(panel, journal);
}

PanelOutcome restorePanel(PanelSettings& panel, const PanelJournal& journal) {
  const auto memories = journal.read();
  if (!memories) return failure(memories.error(), panel, journal);
  if (memories->empty()) {
    PanelOutcome outcome = lookAtPanel(panel, journal);
    outcome.problem.clear();
    outcome.note = "There is nothing to put back.";
    return outcome;
  }
  const auto settings = panel.look();
  if (!settings) return failure(settings.error(), panel, journal);
  Changes changes;
  for (auto each = settings->rbegin(); each != settings->rend(); ++each) {
    const auto found = memories->find(each->key);
    if (found == memories->end() || found->second.after != each->now) continue;
    changes.push_back({each->key, each->now, found->second.before});
  }
  bool undone = true;
  if (const auto made = change(panel, changes, undone); !made) return failure(made.error(), panel, journal);
  if (const auto forgotten = journal.write({}); !forgotten) return failure(forgotten.error(), panel, journal);
  PanelOutcome outcome = lookAtPanel(panel, journal);
  if (changes.size() < memories->size()) outcome.note = "What was changed since stays as it is.";
  return outcome;
}

}  // namespace veloria
