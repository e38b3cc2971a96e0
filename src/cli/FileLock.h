#pragma once

#include <filesystem>

#include "base/Result.h"

namespace veloria::cli {

/// An exclusive lock between processes, held as long as this object lives or until the process ends, however that is.
class FileLock {
 public:
  /// Locks the file at `path`, which is made when missing and never removed. Tries for `seconds`.
  static Result<FileLock> acquire(const std::filesystem::path& path, double seconds);

  ~FileLock();
  FileLock(FileLock&& other) noexcept;
  FileLock& operator=(FileLock&&) = delete;

 private:
  explicit FileLock(int descriptor) : descriptor_(descriptor) {}
  int descriptor_;
};

}  // namespace veloria::cli
