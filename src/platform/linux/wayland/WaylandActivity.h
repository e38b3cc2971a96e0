#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <vector>

#include "platform/linux/wayland/CompositorQuestions.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace veloria {

/// Asks a slow question on a thread of its own. Main thread, but for the question.
class FullScreenInquiry {
 public:
  /// Where a full-screen window is seen now; nothing if the compositor does not say. Must not throw.
  using Question = std::function<std::optional<CoveredOutputs>()>;

  explicit FullScreenInquiry(Question question);
  /// Waits for a question that is under way.
  ~FullScreenInquiry() = default;
  FullScreenInquiry(const FullScreenInquiry&) = delete;
  FullScreenInquiry& operator=(const FullScreenInquiry&) = delete;

  /// Returns at once. A call while a question is under way asks once more after it.
  void ask();
  /// The last answer; nothing before the first one.
  std::optional<CoveredOutputs> answer() const;

 private:
  void work(const std::stop_token& stop);

  Question question_;
  mutable std::mutex mutex_;  // guards the next three
  std::condition_variable_any asked_;
  bool wanted_ = false;
  std::optional<CoveredOutputs> answer_;
  std::jthread thread_;
};

/// Whether a full-screen window is seen on an output. If the compositor answers that, its answer counts. Each call of
/// isActive() asks it, and so does the first change of its list of windows (wlr foreign toplevel management) after a
/// call, so that the next call has the new answer.
///
/// Otherwise there is only that list, which has no workspaces: a full-screen window counts until another one on the
/// same output gets the focus, or it is minimised, closed or no longer full-screen. So an empty workspace on that
/// output counts as covered. Without such a list it is never active. Main thread.
class WaylandFullScreen {
 public:
  /// `connection` must outlive it, and `question` what it needs.
  WaylandFullScreen(WaylandConnection& connection, FullScreenInquiry::Question question);
  ~WaylandFullScreen();
  WaylandFullScreen(const WaylandFullScreen&) = delete;
  WaylandFullScreen& operator=(const WaylandFullScreen&) = delete;

  /// The last known state; never waits. Call it about once a second.
  bool isActive(const WaylandOutput& output);

 private:
  struct Window;
  static const wl_registry_listener registryListener;
  static const zwlr_foreign_toplevel_manager_v1_listener managerListener;
  static const zwlr_foreign_toplevel_handle_v1_listener windowListener;

  void add(zwlr_foreign_toplevel_handle_v1* handle);
  void remove(const Window* window);
  void windowsChanged();
  void markHidden();

  WaylandPtr<wl_registry> registry_;
  WaylandPtr<zwlr_foreign_toplevel_manager_v1> manager_;
  std::vector<std::unique_ptr<Window>> windows_;
  bool askAtOnce_ = false;  ///< at the next change: isActive() was called since
  FullScreenInquiry inquiry_;
};

/// Whether the compositor has switched its outputs off (wlr output power management). Never if it lacks that protocol.
/// Main thread.
class WaylandOutputPower {
 public:
  /// `connection` must outlive it.
  explicit WaylandOutputPower(WaylandConnection& connection);
  ~WaylandOutputPower();
  WaylandOutputPower(const WaylandOutputPower&) = delete;
  WaylandOutputPower& operator=(const WaylandOutputPower&) = delete;

  /// True when there are outputs and all of them are off. Known from events, so it costs nothing.
  bool allOff() const;

 private:
  struct Power;
  static const wl_registry_listener registryListener;
  static const zwlr_output_power_v1_listener powerListener;

  void watchOutputs();

  WaylandConnection& connection_;
  WaylandPtr<wl_registry> registry_;
  WaylandPtr<zwlr_output_power_manager_v1> manager_;
  std::map<std::uint32_t, std::unique_ptr<Power>> powers_;  ///< by the output's number in the registry
  WaylandConnection::Subscription changes_;
};

}  // namespace veloria
