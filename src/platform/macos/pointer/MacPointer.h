#pragma once

#include "ports/PointerSource.h"

namespace veloria {

/// The pointer on a Mac. It needs no permission. Main thread.
PointerSource macPointerSource();

}  // namespace veloria
