#pragma once

#include "platform/macos/stream/ScreenStream.h"
#include "ports/BarCaptureStream.h"

namespace veloria {

/// How to capture a region of the bar without our own windows, of what there is now. Main thread.
StreamPlan barStreamPlan(SCShareableContent* content, const BarRegion& region);

}  // namespace veloria
