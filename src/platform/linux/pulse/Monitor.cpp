#include "platform/linux/pulse/Monitor.h"

#include <pulse/def.h>

namespace veloria {

Result<Monitor> monitorOf(const Output& output) {
  if (output.monitorIndex == PA_INVALID_INDEX || output.monitorName.empty()) {
    return Failure{"The output \"" + output.description + "\" has no monitor, so what it plays can't be heard."};
  }
  return Monitor{output.monitorIndex, output.monitorName};
}

}  // namespace veloria
