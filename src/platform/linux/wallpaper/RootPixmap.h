#pragma once

#include <optional>
#include <string>

#include "ports/DesktopPicture.h"

namespace veloria {

/// A thumbnail of the pixmap that programs leave on the X root window when they set its background (_XROOTPMAP_ID, else
/// ESETROOT_PMAP_ID): of the part on the monitor called `screen`, else on the primary one, where the pixmap is as large
/// as the root window, else of all of it. The server does the scaling (RENDER), each pixel a mean of 64 spread over its
/// area; some ten kilobytes come over the wire whatever the size. Alpha is ignored.
///
/// Nothing when there is no such pixmap or it vanishes, and when the server has no RENDER, refuses the connection or
/// goes away. Any thread that ignores or blocks SIGPIPE; its own connection; blocks as long as the server does.
std::optional<DesktopPicture::Pixels> rootPixmapThumbnail(const std::string& display, const std::string& screen);

}  // namespace veloria
