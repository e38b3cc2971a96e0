#pragma once

#include <sys/stat.h>

#include <ctime>

namespace veloria {

/// When the file's content was changed last; systems call it by different names.
inline timespec modificationTime(const struct stat& attributes) {
#ifdef __APPLE__
  return attributes.st_mtimespec;
#else
  return attributes.st_mtim;
#endif
}

}  // namespace veloria
