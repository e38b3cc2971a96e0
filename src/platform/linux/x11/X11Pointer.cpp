#include "platform/linux/x11/X11Pointer.h"

namespace veloria {

PointerSource x11PointerSource(X11Connection& connection, const X11ScreenProvider& screens) {
  return {.location = [&connection, &screens]() -> std::optional<Point> {
            const auto answer =
                connection.reply(xcb_query_pointer_reply, xcb_query_pointer(connection.raw(), connection.root()));
            if (!answer || answer->same_screen == 0) return std::nullopt;
            return screens.space().toPoints(answer->root_x, answer->root_y);
          },
          .reason = {}};
}

}  // namespace veloria
