#pragma once

#include <QTimer>
#include <functional>
#include <optional>
#include <string>

#include "base/Observable.h"
#include "ui/VisibilityWatch.h"

namespace veloria {

/// What the settings window shows about the running program: sentences, empty if there is nothing to say.
struct Readouts {
  std::string darkness;  ///< why nothing is drawn; empty while the band is lit
  std::string hint;      ///< why the band, though drawn, can't be seen
  std::string figures;   ///< GPU time, frame rate and grid
  std::string cutout;    ///< the camera housing of the main screen
  std::string weather;   ///< the last readings
  std::string weatherError;
  std::string audio;    ///< the levels of the sound, or why there are none
  std::string picture;  ///< why the wallpaper gives no colours, while they are wanted
  std::string capture;  ///< why the bar's text is not kept; empty while it is or need not be
  std::string hdr;      ///< why HDR glow has no effect; empty if it has, or is off
  std::string pointer;  ///< why the pointer is not followed; empty if it is
  std::string script;   ///< the running script's error
};

/// Called on the main thread, a few times a second while the window is open.
using ReadoutSource = std::function<Readouts()>;

/// Reads the state of the running program four times a second while a window is visible, and passes it to all cards
/// that show some of it. Main thread.
class ReadoutTicker : public QObject {
  Q_OBJECT

 public:
  static constexpr int intervalMs = 250;

  /// A child of `window`. Reads at once when the window is shown.
  ReadoutTicker(QWidget* window, ReadoutSource source);

  /// Calls `show` at once with the last readouts (empty before the first) and then with each change.
  Subscription subscribe(std::function<void(const Readouts&)> show) { return last_.subscribe(std::move(show)); }

 private:
  void setRunning(bool on);
  void ask();

  ReadoutSource source_;
  Observable<Readouts> last_{Readouts()};
  QTimer timer_;
  VisibilityWatch watch_;
};

}  // namespace veloria
