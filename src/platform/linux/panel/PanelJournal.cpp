#include "platform/linux/panel/PanelJournal.h"

#include <algorithm>
#include <cmath>
#include <system_error>
#include <utility>

#include "base/Files.h"
#include "base/StrictJson.h"
#include "base/Text.h"
#include "platform/posix/files/UserFolders.h"

namespace veloria {

namespace fs = std::filesystem;

namespace {

using nlohmann::json;

constexpr std::size_t mostBytes = std::size_t{1} << 16;
constexpr std::size_t mostEntries = 200;
constexpr std::size_t mostParts = 16;
constexpr std::size_t longestText = 500;

bool isScalar(const json& value) {
  if (value.is_string()) return isPlainText(value.get_ref<const std::string&>(), longestText);
  return value.is_null() || value.is_boolean() || (value.is_number() && std::isfinite(value.get<double>()));
}

bool isPlainValue(const json& value) {
  if (!value.is_array()) return isScalar(value);
  return value.size() <= mostParts && std::ranges::all_of(value, isScalar);
}

std::optional<PanelMemory> memoryFrom(const json& value) {
  if (!value.is_object() || value.size() != 2 || !value.contains("before") || !value.contains("after")) {
    return std::nullopt;
  }
  if (!isPlainValue(value["before"]) || !isPlainValue(value["after"])) return std::nullopt;
  return PanelMemory{value["before"], value["after"]};
}

std::optional<PanelMemories> memoriesFrom(const json& value) {
  if (!value.is_object() || value.size() > mostEntries) return std::nullopt;
  PanelMemories memories;
  for (const auto& [key, each] : value.items()) {
    auto memory = memoryFrom(each);
    if (!memory || !isPlainText(key, longestText)) return std::nullopt;
    memories.emplace(key, *std::move(memory));
  }
  return memories;
}

}  // namespace

Result<PanelJournalContent> readPanelJournal(std::string_view text) {
  const auto parsed = parseStrictJson(text);
  if (!parsed) return Failure{parsed.error()};
  if (!parsed->is_object() || parsed->size() > mostEntries) return Failure{"not a list of desktops"};
  PanelJournalContent content;
  for (const auto& [desktop, value] : parsed->items()) {
    auto memories = memoriesFrom(value);
    if (!memories || !isPlainText(desktop, longestText)) return Failure{"not a list of settings"};
    content.emplace(desktop, *std::move(memories));
  }
  return content;
}

std::string panelJournalText(const PanelJournalContent& content) {
  json all = json::object();
  for (const auto& [desktop, memories] : content) {
    for (const auto& [key, memory] : memories) all[desktop][key] = {{"before", memory.before}, {"after", memory.after}};
  }
  return all.dump(2) + "\n";
}

PanelJournal::PanelJournal(const Environment& environment, std::string desktop) : desktop_(std::move(desktop)) {
  if (const auto folder = stateFolder(environment)) file_ = *folder / "panel.json";
}

Result<PanelJournalContent> PanelJournal::readAll() const {
  if (!file_) return Failure{"There is no home folder to remember the panel's look in."};
  std::error_code error;
  if (!fs::exists(fs::symlink_status(*file_, error))) return PanelJournalContent();
  const auto text = readFileBounded(*file_, mostBytes);
  auto content = text ? readPanelJournal(*text) : Failure{text.error()};
  if (content) return content;
  return Failure{"The file that remembers the panel's former look can't be read; remove it to go on: " +
                 file_->string()};
}

Result<PanelMemories> PanelJournal::read() const {
  auto content = readAll();
  if (!content) return Failure{content.error()};
  return std::move((*content)[desktop_]);
}

Result<Done> PanelJournal::write(const PanelMemories& memories) const {
  auto content = readAll();
  if (!content) return Failure{content.error()};
  if (memories.empty()) {
    content->erase(desktop_);
  } else {
    (*content)[desktop_] = memories;
  }
  std::error_code error;
  if (content->empty()) {
    fs::remove(*file_, error);
    if (!error) return Done{};
  } else if (makeUserFolder(file_->parent_path()) &&
             writeFileAtomically(*file_, panelJournalText(*content), FileAccess::ownerOnly)) {
    return Done{};
  }
  return Failure{"The panel's former look can't be remembered in " + file_->string() + "."};
}

}  // namespace veloria
