#pragma once

#include <optional>

#include "desktop/Session.h"
#include "platform/linux/x11/X11Client.h"

namespace veloria::tests {

/// One mapped window: a child of the root, or the program's own window inside a window manager's frame.
struct WindowInfo {
  xcb_window_t id = XCB_WINDOW_NONE;
  int level = 0;            ///< of the child of the root that holds it, from 0 at the bottom
  std::string name;         ///< WM_NAME
  std::string windowClass;  ///< the class part of WM_CLASS
  int x = 0;                ///< root pixels, y down
  int y = 0;
  int width = 0;
  int height = 0;
};

/// A private X11 desktop: Xvfb and, as wanted, a window manager, a panel and a compositor. Each start waits until the
/// program does its work and throws std::runtime_error if it does not.
class DesktopSession final : public Session {
 public:
  struct Options {
    int width = 1920;
    int height = 1080;
    std::vector<std::string> serverArguments = {};  ///< more arguments for Xvfb
  };

  /// Includes Xvfb.
  static std::string missing(std::vector<std::string> programs = {});

  DesktopSession() : DesktopSession(Options{}) {}
  explicit DesktopSession(const Options& options);

  const std::string& display() const { return environment_.at("DISPLAY"); }  ///< such as ":5"

  void stopServer() { server_->stop(); }
  /// To the server: SIGSTOP makes it one that hangs.
  void signal(int number) { server_->signal(number); }
  void startWindowManager(const std::string& name);  ///< "openbox" or "xfwm4"
  void stopWindowManager() { windowManager_.reset(); }
  /// tint2, opaque, `height` pixels tall, at the "top" or "bottom"; `monitor` is "all", "primary" or a number from 1.
  void startPanel(int height = 32, const std::string& monitor = "all", const std::string& edge = "top");
  void stopPanel();
  void startCompositor();
  void stopCompositor();
  bool compositorRuns() const;

  Screenshot screenshot(const std::string& output = {}) const override;
  /// Mapped windows, bottom to top; a frame comes before what is in it.
  std::vector<WindowInfo> windows() const;
  std::size_t count(const std::string& nameOrClass) const;
  /// Waits for a mapped window with this WM_NAME or class.
  std::optional<WindowInfo> waitForWindow(const std::string& nameOrClass, double seconds = 10) const;
  /// The numbers of a 32-bit property; empty if it is missing.
  std::vector<std::uint32_t> property(xcb_window_t window, const std::string& name) const;
  xcb_atom_t atom(const std::string& name) const;
  xcb_window_t root() const { return client_->root(); }
  /// The test's own connection, for windows of its own.
  xcb_connection_t* observer() const { return client_->raw(); }

 private:
  bool windowManagerRuns() const;
  bool managesWindows() const;
  bool panelIsUp(int height, bool top) const;
  std::vector<xcb_window_t> children(xcb_window_t window) const;
  std::optional<WindowInfo> describe(xcb_window_t window, int level) const;

  std::unique_ptr<ChildProcess> server_;
  std::unique_ptr<ChildProcess> windowManager_;
  std::unique_ptr<ChildProcess> panel_;
  std::unique_ptr<ChildProcess> compositor_;
  std::unique_ptr<X11Client> client_;
};

}  // namespace veloria::tests
