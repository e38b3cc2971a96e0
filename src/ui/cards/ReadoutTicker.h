#pragma once

#include <QTimer>
#include <functional>

#include "base/Observable.h"
#include "ui/VisibilityWatch.h"
#include "ui/cards/Readouts.h"

namespace veloria {

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
