#pragma once

#include <xcb/xcb.h>

#include <optional>

#include "desktop/Session.h"

namespace veloria::tests {

/// One mapped window: a child of the root, or the program's own window inside a window manager's frame.
struct WindowInfo {
  xcb_window_t id = XCB_WINDOW_NONE;
  xcb_window_t topLevel = XCB_WINDOW_NONE;  ///< the child of the root that holds it
  std::string name;                         ///< WM_NAME
  std::string windowClass;                  ///< the class part of WM_CLASS
  int x = 0;                                ///< root pixels, y down
  int y = 0;
  int width = 0;
  int height = 0;
};

/// A private X11 desktop: Xvfb and, as wanted, a window manager, a panel and a compositor.
///
///     if (const auto missing = DesktopSession::missing({"openbox", "tint2"}); !missing.empty()) GTEST_SKIP() <<
///     missing; DesktopSession desktop; desktop.startWindowManager("openbox"); desktop.startPanel(32); const auto
///     program = desktop.run({"/path/of/program"}, {{"NIMBRA_LAYER", "aboveMenuBar"}});
///     ASSERT_TRUE(desktop.waitForWindow("Veloria"));
///     EXPECT_EQ(desktop.screenshot().at(960, 16), ...);
///
/// Each start waits until the program does its work and throws std::runtime_error if it does not.
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
  void startWindowManager(const std::string& name);  ///< "openbox" or "xfwm4"
  void replaceWindowManager();                       ///< openbox only: "openbox --restart"
  void stopWindowManager() { windowManager_.reset(); }
  /// tint2, opaque, `height` pixels tall, at the top; `monitor` is "all", "primary" or a number from 1.
  void startPanel(int height = 32, const std::string& monitor = "all");
  void stopPanel();
  void startCompositor();
  void stopCompositor();
  bool compositorRuns() const;

  Screenshot screenshot(const std::string& output = {}) const override;
  /// Mapped windows, bottom to top; a frame comes before what is in it.
  std::vector<WindowInfo> windows() const;
  std::size_t count(const std::string& nameOrClass) const;
  /// Waits for the first mapped window with this WM_NAME or class.
  std::optional<WindowInfo> waitForWindow(const std::string& nameOrClass, double seconds = 10) const;
  /// The numbers of a 32-bit property; empty if it is missing.
  std::vector<std::uint32_t> property(xcb_window_t window, const std::string& name) const;
  /// The atoms of a property, by name.
  std::vector<std::string> atomProperty(xcb_window_t window, const std::string& name) const;
  xcb_atom_t atom(const std::string& name) const;
  xcb_window_t root() const { return root_; }
  /// The test's own connection, for windows of its own.
  xcb_connection_t* observer() const { return observer_.get(); }

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
  };

  void startServer(const Options& options);
  bool windowManagerRuns() const;
  bool managesWindows() const;
  bool panelIsUp(int height) const;
  void describe(xcb_window_t window, xcb_window_t topLevel, std::vector<WindowInfo>& result) const;
  std::string textProperty(xcb_window_t window, xcb_atom_t property) const;

  std::unique_ptr<ChildProcess> server_;
  std::unique_ptr<ChildProcess> windowManager_;
  std::unique_ptr<ChildProcess> panel_;
  std::unique_ptr<ChildProcess> compositor_;
  std::unique_ptr<xcb_connection_t, Disconnect> observer_;
  xcb_window_t root_ = XCB_WINDOW_NONE;
};

}  // namespace veloria::tests
