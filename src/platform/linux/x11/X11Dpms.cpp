#include "platform/linux/x11/X11Dpms.h"

#include <xcb/dpms.h>

#include <utility>

namespace veloria {

X11Dpms::X11Dpms(X11Connection& connection) : connection_(connection) {
  const auto* extension = xcb_get_extension_data(connection_.raw(), &xcb_dpms_id);
  if (extension == nullptr || extension->present == 0) return;
  const auto capable = connection_.reply(xcb_dpms_capable_reply, xcb_dpms_capable(connection_.raw()));
  available_ = capable && capable->capable != 0;
}

void X11Dpms::poll() {
  if (!available_) return;
  const bool off = areOff();
  if (std::exchange(off_, off) != off && handler_) handler_(off);
}

bool X11Dpms::areOff() {
  const auto info = connection_.reply(xcb_dpms_info_reply, xcb_dpms_info(connection_.raw()));
  return info && displaysAreOff(info->state != 0, info->power_level);
}

}  // namespace veloria
