#pragma once

#include <filesystem>
#include <memory>

#include "Process.h"

namespace veloria::tests {

/// The colour of one pixel on the screen.
struct Pixel {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  bool operator==(const Pixel&) const = default;
};

/// What a screen shows.
struct Screenshot {
  int width = 0;
  int height = 0;
  std::vector<Pixel> pixels;  ///< rows from the top
  Pixel at(int x, int y) const {
    return pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
  }
};

struct Region {
  int x;
  int y;
  int width;
  int height;
};

/// The share of pixels for which `holds`.
double share(const Screenshot& picture, const Region& region, const std::function<bool(const Pixel&)>& holds);
/// The share of pixels that are light: clearly coloured, unlike panel, root window and windows in these tests.
double litShare(const Screenshot& picture, const Region& region);
/// The mean difference of two pictures' components, of 255.
double difference(const Screenshot& a, const Screenshot& b, const Region& region);

/// A private desktop for tests: a display server of its own (never the one that runs already) and programs on it, all
/// real. A kind of desktop derives from this: its constructor starts the server and adds to environment_ the variables
/// that lead programs to it. Everything ends with this object. HOME and the XDG folders are in a temporary folder,
/// which is kept if VELORIA_KEEP_DESKTOP is set.
class Session {
 public:
  /// A sentence that names which of these programs is not installed; empty if all are.
  static std::string missing(const std::vector<std::string>& programs);

  Session();
  virtual ~Session() = default;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  std::filesystem::path folder() const { return folder_.path(); }
  const std::map<std::string, std::string>& environment() const { return environment_; }

  /// Starts a program on this desktop.
  std::unique_ptr<ChildProcess> run(const std::vector<std::string>& argv,
                                    const std::map<std::string, std::string>& environment = {});
  /// Runs a short program to its end.
  ProcessResult finish(const std::vector<std::string>& argv) const;
  /// The same; returns what it wrote. Throws std::runtime_error unless it exits with 0.
  std::string runToEnd(const std::vector<std::string>& argv) const;

  /// What an output shows, in its own pixels (empty: the first output, or the whole screen).
  virtual Screenshot screenshot(const std::string& output = {}) const = 0;

  /// Called in each round of every wait; tests run their event loop in it.
  void setIdle(std::function<void()> idle) { idle_ = std::move(idle); }
  bool waitUntil(const std::function<bool()>& condition, double seconds = 20) const;

 protected:
  /// Waits until the server or one of its programs works. Throws std::runtime_error, with what it wrote, if it does
  /// not.
  void require(const std::string& what, ChildProcess& process, const std::function<bool()>& condition) const;

  TemporaryFolder folder_;
  std::map<std::string, std::string> environment_;

 private:
  std::function<void()> idle_;
  int runs_ = 0;
};

}  // namespace veloria::tests
