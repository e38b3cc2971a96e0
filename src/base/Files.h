#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "base/Result.h"

namespace veloria {

/// The whole of a regular file (symbolic links are followed) of at most `cap` bytes. Anything else is refused without
/// waiting for it: a FIFO, a device, a folder, a loop of links, a larger file. Blocks only as long as the disk does.
/// The error is "path: reason". Any thread.
Result<std::string> readFileBounded(const std::filesystem::path& path, std::size_t cap);

/// The permissions of a file that did not exist before; one that did keeps its own.
enum class FileAccess { byUmask, ownerOnly };

/// Replaces a file's content, all or nothing, also when the process is killed or the machine loses power: a temporary
/// file in the same folder is written, flushed to the disk and renamed. A symbolic link stays, and the file that it
/// leads to is replaced. The folder must exist; what is there must be a regular file or nothing. Of several writers at
/// once the last one wins, whole. On failure the old content and no temporary file is there, and the error is "path:
/// reason". Any thread.
Result<Done> writeFileAtomically(const std::filesystem::path& path, std::string_view bytes,
                                 FileAccess access = FileAccess::byUmask);

/// Removes temporary files of writeFileAtomically() that a killed process left in `folder`: those more than an hour
/// old. Failures don't matter.
void removeStaleTemporaryFiles(const std::filesystem::path& folder) noexcept;

}  // namespace veloria
