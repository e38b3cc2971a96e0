#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "base/Result.h"

namespace veloria {

/// The display settings of the desktop that affect how visible the band is.
struct SystemFacts {
  bool reduceTransparency = false;  ///< nothing is drawn translucent
  bool increaseContrast = false;    ///< the user asks for more contrast
  double glassTint = 0;             ///< how far glass is tinted; 0 without such a setting

  bool operator==(const SystemFacts&) const = default;
};

/// A part of the desktop's own settings that can be opened.
enum class SystemPane { menuBar, appearance, accessibilityDisplay, wallpaper };

/// Port: the desktop's own settings. Main thread.
class SystemPort {
 public:
  virtual ~SystemPort() = default;
  SystemPort(const SystemPort&) = delete;
  SystemPort& operator=(const SystemPort&) = delete;

  /// What is known now. Doesn't wait: slow values are looked up and reported through the handler.
  virtual SystemFacts facts() = 0;
  /// Called when the facts may have changed. An empty handler ends the calls.
  virtual void setChangeHandler(std::function<void()> handler) = 0;
  /// Shows a pane to the user. The error is a sentence for them.
  virtual Result<Done> open(SystemPane pane) = 0;

 protected:
  SystemPort() = default;
};

/// Port: whether this program starts at login. Main thread; short waits for the disk only.
class LoginItemPort {
 public:
  virtual ~LoginItemPort() = default;
  LoginItemPort(const LoginItemPort&) = delete;
  LoginItemPort& operator=(const LoginItemPort&) = delete;

  virtual bool isRegistered() = 0;
  /// Repeating either succeeds. The error is a text for people.
  virtual Result<Done> add() = 0;
  virtual Result<Done> remove() = 0;

 protected:
  LoginItemPort() = default;
};

/// Port: what installing the command-line tool needs from the system. Any one thread at a time.
class CommandLinePort {
 public:
  virtual ~CommandLinePort() = default;
  CommandLinePort(const CommandLinePort&) = delete;
  CommandLinePort& operator=(const CommandLinePort&) = delete;

  /// The standard output of a program (`argv[0]`, found on the PATH, and its arguments), whatever its exit code. Empty
  /// if it can't be started, or was stopped because it wrote too much or took too long. Waits for seconds at most.
  virtual std::string output(const std::vector<std::string>& argv) = 0;
  /// Whether this is a folder in which the user may create and remove files.
  virtual bool isWritableFolder(const std::filesystem::path& folder) = 0;
  /// Whether this is, or links to, a file that the user may run.
  virtual bool isRunnable(const std::filesystem::path& file) = 0;

 protected:
  CommandLinePort() = default;
};

}  // namespace veloria
