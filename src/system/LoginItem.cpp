#include "system/LoginItem.h"

#include "base/Log.h"

namespace veloria {

Result<Done> LoginItem::set(bool enabled) {
  Result<Done> changed = enabled ? port_.add() : port_.remove();
  if (!changed) systemLog("Veloria: login item change failed: " + changed.error());
  return changed;
}

}  // namespace veloria
