#include "ClearingMark.h"

#include <string>
#include <string_view>
#include <system_error>

#include "base/Files.h"
#include "platform/posix/files/UserFolders.h"

namespace veloria {

namespace {

constexpr std::size_t longestFile = 64;

constexpr struct {
  std::string_view text;
  ClearingMark::Value value;
} contents[] = {{"waiting\n", {ClearingMark::Stage::waiting, false}},
                {"waiting, extensions may be switched on\n", {ClearingMark::Stage::waiting, true}},
                {"enabled\n", {ClearingMark::Stage::enabled, false}},
                {"enabled, extensions switched on\n", {ClearingMark::Stage::enabled, true}}};

std::optional<ClearingMark::Value> valueIn(const Result<std::string>& file) {
  for (const auto& each : contents) {
    if (file && *file == each.text) return each.value;
  }
  return std::nullopt;
}

std::string_view textOf(const ClearingMark::Value& value) {
  for (const auto& each : contents) {
    if (each.value.stage == value.stage && each.value.switchedOn == value.switchedOn) return each.text;
  }
  return contents[0].text;
}

}  // namespace

ClearingMark::ClearingMark(const std::optional<std::filesystem::path>& folder) {
  if (!folder) return;
  file_ = *folder / "gnome-panel";
  value_ = valueIn(readFileBounded(*file_, longestFile));
}

Result<Done> ClearingMark::set(const Value& value) {
  if (!file_ || !makeUserFolder(file_->parent_path())) {
    return Failure{"There is no folder in which Veloria could note what it changes."};
  }
  auto done = writeFileAtomically(*file_, textOf(value), FileAccess::ownerOnly);
  if (!done) return Failure{"Veloria cannot note what it changes: " + done.error()};
  value_ = value;
  return done;
}

void ClearingMark::clear() {
  value_.reset();
  std::error_code ignored;
  if (file_) std::filesystem::remove(*file_, ignored);
}

}  // namespace veloria
