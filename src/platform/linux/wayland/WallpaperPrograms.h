#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string_view>
#include <vector>

#include "ports/EventLoop.h"

namespace veloria {

/// True for the name of a program that paints the desktop's picture through the layer shell.
bool isWallpaperProgram(std::string_view name);

/// Notices wallpaper programs that start. No protocol announces another client's surface, so this reads the list of
/// processes once a second, and only while there are subscribers. It misses programs that it doesn't know and those
/// whose processes are hidden (in a sandbox). Main thread.
class WallpaperPrograms {
 public:
  /// `timers` must outlive it.
  explicit WallpaperPrograms(TimerFactory& timers) : timers_(timers) {}
  WallpaperPrograms(const WallpaperPrograms&) = delete;
  WallpaperPrograms& operator=(const WallpaperPrograms&) = delete;

  /// `handler` is called twice after a start, since the picture may take a while to appear, with the seconds after
  /// which it probably has. The subscription ends when the returned object is destroyed.
  [[nodiscard]] std::shared_ptr<void> onStart(std::function<void(double delay)> handler);

 private:
  void look();
  bool newOneRuns();

  TimerFactory& timers_;
  std::vector<std::weak_ptr<std::function<void(double)>>> subscribers_;
  // A process has its parent's name until it has become its program, so each is read in two rounds.
  std::set<long> recent_;
  std::set<long> older_;
  std::set<long> wallpapers_;
  int repeats_ = 0;
  std::unique_ptr<Timer> timer_;
};

}  // namespace veloria
