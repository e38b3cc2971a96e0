#pragma once

#include <xcb/shm.h>

#include <cstdint>

#include "platform/linux/pictures/SharedMemory.h"
#include "platform/linux/x11/X11Client.h"

namespace veloria {

/// Whether the server takes memory by its descriptor: it is on this machine, and has MIT-SHM 1.2. Up to two round
/// trips.
bool takesSharedMemory(X11Client& client);

/// The server's name for `memory`, which may be released; XCB_NONE if the server refuses. One round trip.
xcb_shm_seg_t attachMemory(X11Client& client, const SharedMemory& memory, bool readOnly);

/// Gives it back, without waiting. XCB_NONE is none.
void detachMemory(X11Client& client, xcb_shm_seg_t segment);

/// Whether pixels of this depth are blue, green and red, and alpha if there is any, 8 bits each.
constexpr bool isPlainDepth(std::uint8_t depth) {
  return depth == 24 || depth == 32;
}

/// Whether the depth is plain, and the server keeps its pixels in 32 bits, blue in the first byte.
bool hasPlainPixels(X11Client& client, std::uint8_t depth);

}  // namespace veloria
