#pragma once

#include <sys/stat.h>

#include <ctime>

namespace veloria {

/// The last change of the file's content; the member's name differs between systems.
inline timespec modificationTime(const struct stat& attributes) {
#ifdef __APPLE__
  return attributes.st_mtimespec;
#else
  return attributes.st_mtim;
#endif
}

}  // namespace veloria
