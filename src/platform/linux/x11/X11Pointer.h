#pragma once

#include "platform/linux/x11/X11ScreenProvider.h"
#include "ports/PointerSource.h"

namespace veloria {

/// The pointer on an X server: one round trip each time it is asked, absent while it is on another X screen or the
/// connection is broken. Both must outlive it. Main thread.
PointerSource x11PointerSource(X11Connection& connection, const X11ScreenProvider& screens);

}  // namespace veloria
