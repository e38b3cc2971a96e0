#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <ctime>
#include <filesystem>
#include <string>
#include <string_view>

#include "base/Result.h"

namespace veloria {

/// Reads a whole regular file of at most `cap` bytes, following symbolic links. Anything else is an error, without
/// waiting: a FIFO, a device, a folder, a loop of links, a larger file. Blocks only for the disk. The error is
/// "path: reason". Any thread.
Result<std::string> readFileBounded(const std::filesystem::path& path, std::size_t cap);

/// The permissions of a new file; an existing one keeps its own.
enum class FileAccess { byUmask, ownerOnly };

/// Replaces a file's content, all or nothing, even if the process is killed or the power fails: writes a temporary file
/// in the same folder, flushes it to the disk and renames it. A symbolic link stays, and its target is replaced. The
/// folder must exist; the path must be a regular file or nothing. Of several writers the last one wins. A failure keeps
/// the old content and leaves no temporary file. The error is "path: reason". Any thread.
Result<Done> writeFileAtomically(const std::filesystem::path& path, std::string_view bytes,
                                 FileAccess access = FileAccess::byUmask);

/// Removes temporary files that a killed process left in `folder`: those of writeFileAtomically() that are more than an
/// hour old. Ignores errors.
void removeStaleTemporaryFiles(const std::filesystem::path& folder) noexcept;

/// The last change of the file's content; the member's name differs between systems.
inline timespec modificationTime(const struct stat& attributes) {
#ifdef __APPLE__
  return attributes.st_mtimespec;
#else
  return attributes.st_mtim;
#endif
}

}  // namespace veloria
