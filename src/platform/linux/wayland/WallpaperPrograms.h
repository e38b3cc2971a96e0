#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string_view>
#include <vector>

#include "ports/Timer.h"

namespace veloria {

/// True for the name of a program that paints the desktop's picture through the layer shell.
bool isWallpaperProgram(std::string_view name);

/// Notices wallpaper programs that start. No protocol tells that another client's surface has come, so this looks at
/// the list of processes once a second, and only while somebody listens. Programs that it doesn't know, and those that
/// run where their processes can't be seen (a sandbox), go unnoticed. Main thread.
class WallpaperPrograms {
 public:
  /// `timers` must outlive it.
  explicit WallpaperPrograms(TimerFactory& timers) : timers_(timers) {}
  WallpaperPrograms(const WallpaperPrograms&) = delete;
  WallpaperPrograms& operator=(const WallpaperPrograms&) = delete;

  /// `handler` is called twice after a start, since nobody knows when a picture is read and shown, with the seconds
  /// after which it may well be there. The subscription ends when what is returned is let go.
  [[nodiscard]] std::shared_ptr<void> onStart(std::function<void(double delay)> handler);

 private:
  void look();
  bool newOneRuns();

  TimerFactory& timers_;
  std::vector<std::weak_ptr<std::function<void(double)>>> subscribers_;
  // A process bears its parent's name until it has become its program, so each is looked at in two rounds.
  std::set<long> recent_;
  std::set<long> older_;
  std::set<long> wallpapers_;
  int repeats_ = 0;
  std::unique_ptr<Timer> timer_;
};

}  // namespace veloria
