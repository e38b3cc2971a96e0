#include "platform/linux/system/AutostartLoginItem.h"

#include <system_error>
#include <utility>

#include "base/Files.h"
#include "platform/posix/files/UserFolders.h"
#include "platform/linux/system/AutostartEntry.h"

namespace veloria {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t mostBytes = std::size_t{64} << 10;

}  // namespace

AutostartLoginItem::AutostartLoginItem(const Environment& environment, fs::path program)
    : program_(std::move(program)) {
  if (const auto own = configFolder(environment)) file_ = own->parent_path() / "autostart" / "veloria.desktop";
}

bool AutostartLoginItem::isRegistered() {
  const auto entry = readFileBounded(file_, mostBytes);
  return entry && startsAtLogin(*entry);
}

Result<Done> AutostartLoginItem::add() {
  if (file_.empty()) return Failure{"there is no home folder"};
  const auto entry = autostartEntry(program_);
  if (!entry) return Failure{entry.error()};
  if (!makeUserFolder(file_.parent_path())) return Failure{file_.parent_path().string() + ": it can't be made"};
  return writeFileAtomically(file_, *entry);
}

Result<Done> AutostartLoginItem::remove() {
  if (!isRegistered()) return Done{};
  std::error_code error;
  fs::remove(file_, error);
  if (error) return Failure{file_.string() + ": " + error.message()};
  return Done{};
}

}  // namespace veloria
