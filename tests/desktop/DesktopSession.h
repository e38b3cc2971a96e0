#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desktop/ChildProcess.h"
#include "desktop/Screenshot.h"

namespace veloria::desktop {

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

/// A private desktop for tests: an X server of its own (never the one that runs already) and, as wanted, a window
/// manager, a panel and a compositor, all real programs. Everything ends with this object.
///
///     if (const auto missing = DesktopSession::missing(); !missing.empty()) GTEST_SKIP() << missing;
///     DesktopSession desktop;
///     desktop.startWindowManager("openbox");
///     desktop.startPanel(32);
///     desktop.startCompositor();
///     const auto program = desktop.run({"/path/of/program", "--option"}, {{"NIMBRA_LAYER", "aboveMenuBar"}});
///     ASSERT_TRUE(desktop.waitForWindow("Veloria"));
///     EXPECT_EQ(desktop.screenshot().at(960, 16), ...);
///
/// Each start waits until the program does its work and throws std::runtime_error, with what the program wrote, when it
/// does not. HOME and the XDG folders of all programs are in a temporary folder, which is removed at the end (kept when
/// VELORIA_KEEP_DESKTOP is set).
class DesktopSession {
 public:
  struct Options {
    int width = 1920;
    int height = 1080;
    std::vector<std::string> serverArguments;  ///< more arguments for Xvfb
  };

  /// A sentence that names what is missing for sessions with these programs; empty when nothing is.
  static std::string missing(const std::vector<std::string>& more = {});

  DesktopSession();
  explicit DesktopSession(const Options& options);
  ~DesktopSession();
  DesktopSession(const DesktopSession&) = delete;
  DesktopSession& operator=(const DesktopSession&) = delete;

  const std::string& display() const { return display_; }  ///< such as ":5"
  const std::filesystem::path& folder() const { return folder_; }
  /// DISPLAY, HOME and the XDG folders.
  const std::map<std::string, std::string>& environment() const { return environment_; }

  void stopServer();
  void startWindowManager(const std::string& name);  ///< "openbox" or "xfwm4"
  void replaceWindowManager();                       ///< openbox only: "openbox --restart"
  void stopWindowManager();
  /// tint2, opaque, `height` pixels tall, at the top; `monitor` is "all", "primary" or a number from 1.
  void startPanel(int height = 32, const std::string& monitor = "all");
  void stopPanel();
  void startCompositor();
  void stopCompositor();
  bool compositorRuns() const;

  /// Starts a program on this desktop.
  std::unique_ptr<ChildProcess> run(const std::vector<std::string>& argv,
                                    const std::map<std::string, std::string>& environment = {});
  /// Runs a short program to its end and returns what it wrote. Throws std::runtime_error unless it exits with 0.
  std::string runToEnd(const std::vector<std::string>& argv);

  Screenshot screenshot() const;
  /// Mapped windows, bottom to top; a frame comes before what is in it.
  std::vector<WindowInfo> windows() const;
  /// The first mapped window with this WM_NAME or class, waited for.
  std::optional<WindowInfo> waitForWindow(const std::string& nameOrClass, double seconds = 10) const;
  /// The numbers of a 32-bit property; empty when it is missing.
  std::vector<std::uint32_t> property(xcb_window_t window, const std::string& name) const;
  /// The atoms of a property, by name.
  std::vector<std::string> atomProperty(xcb_window_t window, const std::string& name) const;
  xcb_atom_t atom(const std::string& name) const;
  xcb_window_t root() const { return screen_->root; }
  /// The test's own connection, for windows of its own.
  xcb_connection_t* observer() const { return observer_.get(); }

  /// Called in each round of every wait; tests run their event loop in it.
  void setIdle(std::function<void()> idle) { idle_ = std::move(idle); }
  bool waitUntil(const std::function<bool()>& condition, double seconds = 10) const;

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
  };

  void makeFolder();
  void startServer(const Options& options);
  void connect();
  std::unique_ptr<ChildProcess> launch(const std::string& name, const std::vector<std::string>& argv);
  void require(bool done, const std::string& what, ChildProcess& process) const;
  bool windowManagerRuns() const;
  bool managesWindows() const;
  bool panelIsUp(int height) const;
  std::string writeConfiguration(const std::string& name, const std::map<std::string, std::string>& values) const;
  void describe(xcb_window_t window, xcb_window_t topLevel, std::vector<WindowInfo>& result) const;
  std::string textProperty(xcb_window_t window, xcb_atom_t property) const;

  std::filesystem::path folder_;
  std::string display_;
  std::map<std::string, std::string> environment_;
  std::function<void()> idle_;
  int runs_ = 0;
  std::unique_ptr<ChildProcess> server_;
  std::unique_ptr<xcb_connection_t, Disconnect> observer_;
  xcb_screen_t* screen_ = nullptr;
  std::unique_ptr<ChildProcess> windowManager_;
  std::unique_ptr<ChildProcess> panel_;
  std::unique_ptr<ChildProcess> compositor_;
};

}  // namespace veloria::desktop
