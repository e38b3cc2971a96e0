#include "platform/linux/files/OnceMark.h"

#include <system_error>

#include "base/Files.h"
#include "base/Log.h"
#include "platform/linux/files/UserFolders.h"

namespace veloria {

OnceMark::OnceMark(const std::optional<std::filesystem::path>& folder, const std::string& name) {
  if (folder) file_ = *folder / name;
}

bool OnceMark::isSet() const {
  std::error_code unknown;
  return file_ && std::filesystem::exists(*file_, unknown);
}

void OnceMark::set() const {
  if (!file_ || isSet() || !makeUserFolder(file_->parent_path())) return;
  const auto done = writeFileAtomically(*file_, "", FileAccess::ownerOnly);
  if (!done) NimbraLog::debug("not remembered: " + done.error());
}

}  // namespace veloria
