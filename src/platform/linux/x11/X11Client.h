#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/screens/ScreenDescription.h"

namespace veloria {

/// Something xcb allocated.
struct XcbFree {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using XcbPtr = std::unique_ptr<T, XcbFree>;

/// An extension's event numbers; `firstEvent` is 0 if the server lacks it.
struct X11Extension {
  bool present = false;
  std::uint8_t firstEvent = 0;
};

/// A monitor as RandR reports it, in root pixels.
struct X11Monitor {
  std::string name;
  PixelRect frame;
  bool primary = false;
};

/// One connection to an X server, for requests and their replies. On a connection that breaks every request does
/// nothing and every reply is null. One thread, which ignores or blocks SIGPIPE.
class X11Client {
 public:
  /// Connects to `displayName` ($DISPLAY when empty). Throws std::runtime_error with a sentence for a person.
  explicit X11Client(const std::string& displayName);
  virtual ~X11Client();
  X11Client(const X11Client&) = delete;
  X11Client& operator=(const X11Client&) = delete;

  xcb_connection_t* raw() const { return connection_.get(); }
  const xcb_screen_t& screen() const { return *screen_; }
  xcb_window_t root() const { return screen_->root; }
  bool isBroken() const { return xcb_connection_has_error(raw()) != 0; }

  /// Waits for the reply to a request; null if the server refused it or is gone.
  template <typename Reply, typename Cookie>
  XcbPtr<Reply> reply(Reply* (*fetch)(xcb_connection_t*, Cookie, xcb_generic_error_t**), Cookie cookie) {
    xcb_generic_error_t* error = nullptr;
    XcbPtr<Reply> result(fetch(raw(), cookie, &error));
    std::free(error);
    replyRead();
    return result;
  }

  xcb_get_property_cookie_t requestProperty(xcb_window_t window, xcb_atom_t property, std::uint32_t maximumWords) const;
  /// The 32-bit items of a requested property; empty for a missing one and for any other format.
  std::vector<std::uint32_t> numbers(xcb_get_property_cookie_t cookie);
  /// The bytes of a requested property of 8-bit items.
  std::string text(xcb_get_property_cookie_t cookie);

  /// Where the root window is: at (0, 0), with the size it has now.
  PixelRect rootRect();

  X11Extension extension(xcb_extension_t* id) const;
  /// RandR; present from version 1.5 on.
  X11Extension randrExtension();
  /// The active monitors, 64 at most, for a server with randrExtension().
  std::vector<X11Monitor> monitors();

 protected:
  const std::string& displayName() const { return displayName_; }
  int screenNumber() const { return screenNumber_; }

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
  };

  /// Waiting for a reply also reads the events that were sent before it.
  virtual void replyRead() {}
  std::string atomName(xcb_get_atom_name_cookie_t cookie);

  std::string displayName_;
  int screenNumber_ = 0;
  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  xcb_screen_t* screen_ = nullptr;
};

/// Why xcb gave a connection up, for a person.
const char* connectionErrorText(int error);

/// True if the server has named its version and that is at least this one.
template <typename Reply>
bool atLeast(const XcbPtr<Reply>& version, std::uint32_t major, std::uint32_t minor) {
  return version &&
         (version->major_version > major || (version->major_version == major && version->minor_version >= minor));
}

}  // namespace veloria
