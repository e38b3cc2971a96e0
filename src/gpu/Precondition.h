#pragma once

#include <string>

#include "gpu/Types.h"

namespace veloria::gpu {

/// Throws PreconditionError with `text` unless `holds`. The text is a plain literal, so that a check that holds costs
/// nothing but the comparison.
inline void require(bool holds, const char* text) {
  if (!holds) throw PreconditionError(text);
}

}  // namespace veloria::gpu
