#include "system/LoginItem.h"

#include "base/Log.h"

namespace veloria {

void LoginItem::set(bool enabled) {
  const auto changed = enabled ? port_.add() : port_.remove();
  if (!changed) systemLog("Veloria: login item change failed: " + changed.error());
}

}  // namespace veloria
