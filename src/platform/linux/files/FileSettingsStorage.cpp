#include "platform/linux/files/FileSettingsStorage.h"

#include <utility>

#include "base/Files.h"
#include "base/Log.h"
#include "base/StrictJson.h"
#include "platform/posix/files/UserFolders.h"

namespace veloria {

FileSettingsStorage::FileSettingsStorage(std::filesystem::path folder) : folder_(std::move(folder)) {
  if (!folder_.empty()) removeStaleTemporaryFiles(folder_);
}

std::optional<std::string> FileSettingsStorage::read(std::string_view key) {
  const auto file = fileFor(key);
  if (!file) return std::nullopt;
  auto bytes = readFileBounded(*file, maximumJsonBytes);
  if (bytes) return *std::move(bytes);
  NimbraLog::debug("settings not read: " + bytes.error());
  return std::nullopt;
}

bool FileSettingsStorage::write(std::string_view key, std::string_view bytes) {
  const auto file = fileFor(key);
  if (!file || !makeUserFolder(folder_)) return false;
  const auto done = writeFileAtomically(*file, bytes, FileAccess::ownerOnly);
  if (!done) NimbraLog::debug("settings not written: " + done.error());
  return static_cast<bool>(done);
}

std::optional<std::filesystem::path> FileSettingsStorage::fileFor(std::string_view key) const {
  const bool plain = !key.empty() && key.front() != '.' && key.find_first_of(std::string_view("/\0", 2)) == key.npos;
  if (folder_.empty() || !plain) return std::nullopt;
  return folder_ / (std::string(key) + ".json");
}

}  // namespace veloria
