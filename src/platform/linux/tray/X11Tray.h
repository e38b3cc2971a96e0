#pragma once

#include <cstdint>

struct xcb_connection_t;

namespace veloria {

/// The system tray (of the XEmbed kind) of the X server that the event loop is connected to; where it isn't on one,
/// there is none. Main thread, with a QGuiApplication.
class X11Tray {
 public:
  X11Tray();

  /// Whether one runs. Asks the server.
  bool runs() const;

  /// Whether this event of the X connection says that one has come.
  bool comesWith(const void* xcbEvent) const;

 private:
  xcb_connection_t* server_;
  std::uint32_t manager_ = 0;  // atoms
  std::uint32_t selection_ = 0;
};

}  // namespace veloria
