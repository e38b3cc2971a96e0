#pragma once

#include <optional>
#include <string>

#include "ports/DesktopPicture.h"

namespace veloria {

/// A thumbnail of the pixmap that programs leave on the X root window when they set its background (_XROOTPMAP_ID, else
/// ESETROOT_PMAP_ID). If the pixmap is as large as the root window, of the part on the monitor called `screen`, else on
/// the primary one; otherwise of the whole pixmap. The server scales it (RENDER), each pixel a mean of 64 samples, and
/// sends about ten kilobytes whatever the size. Ignores alpha.
///
/// Empty if there is no such pixmap or it vanishes, or if the server has no RENDER, refuses the connection or goes
/// away. Any thread that ignores or blocks SIGPIPE; opens a connection of its own; blocks on the server.
std::optional<DesktopPicture::Pixels> rootPixmapThumbnail(const std::string& display, const std::string& screen);

}  // namespace veloria
