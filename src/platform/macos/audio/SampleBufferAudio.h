#pragma once

#import <CoreMedia/CoreMedia.h>

#include <functional>

#include "ports/AudioBlock.h"

namespace veloria {

/// Hands the sound in `buffer` to `take`, once, as a block that is valid during that call; a block that says why where
/// it can't be read.
void readAudio(CMSampleBufferRef buffer, const std::function<void(const AudioBlock&)>& take);

}  // namespace veloria
